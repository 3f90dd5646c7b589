#include "host/TagList.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

namespace {

bool IsText(Tag tag) { return KindOf(tag) == TagKind_String || KindOf(tag) == TagKind_Id; }

/// Truncates, limited to the range of the result; not-a-number gives 0.
int64_t Truncate(double number) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (number >= limit) return std::numeric_limits<int64_t>::max();
    if (number < -limit) return std::numeric_limits<int64_t>::min();
    return number == number ? static_cast<int64_t>(number) : 0;
}

} // namespace

uint64_t TagItem::FromDouble(double number) { return std::bit_cast<uint64_t>(number); }

TagList::Entry::Entry(const TagItem& item) : TagItem(item) {
    if (!IsText(tag)) return;
    text = std::make_shared<const std::string>(value != 0 ? Text() : "");
    value = FromPtr(text->c_str());
}

TagList::TagList(const TagItem* array, bool) {
    if (array == nullptr) return;
    for (; array->tag != 0; ++array)
        entries_.emplace_back(*array);
}

const TagItem* TagList::Find(Tag tag) const {
    for (const Entry& entry : entries_) {
        if (entry.tag == tag) return &entry;
    }
    return nullptr;
}

const TagItem* TagList::FindNext(const TagItem* item) const {
    if (item == nullptr) return nullptr;
    const Entry* const end = entries_.data() + entries_.size();
    for (const Entry* next = static_cast<const Entry*>(item) + 1; next != end; ++next) {
        if (next->tag == item->tag) return next;
    }
    return nullptr;
}

bool TagList::FindQuery(Tag tag) const { return Find(tag) != nullptr; }

int64_t TagList::GetLong(Tag tag, int64_t defaultValue) const {
    const TagItem* const item = Find(tag);
    if (item == nullptr) return defaultValue;
    switch (KindOf(tag)) {
    case TagKind_Integer: return static_cast<int64_t>(item->value);
    case TagKind_Double: return Truncate(std::bit_cast<double>(item->value));
    default: return defaultValue;
    }
}

double TagList::GetDouble(Tag tag, double defaultValue) const {
    const TagItem* const item = Find(tag);
    if (item == nullptr) return defaultValue;
    switch (KindOf(tag)) {
    case TagKind_Integer: return static_cast<double>(static_cast<int64_t>(item->value));
    case TagKind_Double: return std::bit_cast<double>(item->value);
    default: return defaultValue;
    }
}

void* TagList::GetPtr(Tag tag, const void* defaultValue) const {
    const TagItem* const item = KindOf(tag) == TagKind_Pointer ? Find(tag) : nullptr;
    return item != nullptr ? reinterpret_cast<void*>(item->value) : const_cast<void*>(defaultValue);
}

const char* TagList::GetString(Tag tag, const char* defaultValue) const {
    const TagItem* const item = IsText(tag) ? Find(tag) : nullptr;
    return item != nullptr ? item->Text() : defaultValue;
}

void TagList::Set(Tag tag, int value, bool) { SetNumber(tag, value, value); }

void TagList::Set(Tag tag, uint32_t value, bool) { SetNumber(tag, value, value); }

void TagList::Set(Tag tag, int64_t value, bool) { SetNumber(tag, value, static_cast<double>(value)); }

void TagList::Set(Tag tag, double value, bool) { SetNumber(tag, Truncate(value), value); }

void TagList::Set(Tag tag, const CxID& value, bool) {
    if (IsText(tag)) Assign(Entry({tag, TagItem::FromPtr(value)}));
}

void TagList::SetPtr(Tag tag, const void* value) {
    if (KindOf(tag) == TagKind_Pointer) Assign(Entry({tag, TagItem::FromPtr(value)}));
}

void TagList::Set(const TagItem* array, const void*) {
    const TagList source(array, false);
    SetTags(&source, false);
}

void TagList::Add(Tag tag, const char* value) {
    if (IsText(tag)) entries_.emplace_back(TagItem{tag, TagItem::FromPtr(value)});
}

void TagList::Add(Tag tag, const CxID& value) { Add(tag, static_cast<const char*>(value)); }

void TagList::SetTags(const TagList* other, bool) {
    if (other == nullptr) return;
    TagList result(*this); // replaces this list when all is set; `other` may be this list
    for (const Entry& entry : other->entries_)
        result.AssignOrAppend(entry);
    entries_.swap(result.entries_);
}

void TagList::Delete(Tag tag) {
    std::erase_if(entries_, [tag](const Entry& entry) { return entry.tag == tag; });
}

std::vector<TagItem> TagList::Items() const { return {entries_.begin(), entries_.end()}; }

void TagList::Assign(Entry entry) {
    const auto found = std::ranges::find(entries_, entry.tag, &Entry::tag);
    if (found != entries_.end()) {
        *found = std::move(entry);
    } else {
        entries_.push_back(std::move(entry));
    }
}

void TagList::AssignOrAppend(const Entry& entry) {
    if ((entry.tag & TagFlag_Repeatable) != 0) {
        entries_.push_back(entry);
    } else {
        Assign(entry);
    }
}

void TagList::SetNumber(Tag tag, int64_t integer, double number) {
    switch (KindOf(tag)) {
    case TagKind_Integer: return Assign(Entry({tag, TagItem::FromInt(integer)}));
    case TagKind_Double: return Assign(Entry({tag, TagItem::FromDouble(number)}));
    default: return;
    }
}
