#include "host/TagList.h"

#include <bit>
#include <limits>
#include <utility>

namespace {

bool IsText(Tag tag) { return KindOf(tag) == TagKind_String || KindOf(tag) == TagKind_Id; }

std::shared_ptr<const std::string> CopyText(const char* text) {
    return std::make_shared<const std::string>(text != nullptr ? text : "");
}

/// Truncates, limited to the range of the result; not-a-number gives 0.
int64_t Truncate(double number) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (number >= limit) return std::numeric_limits<int64_t>::max();
    if (number < -limit) return std::numeric_limits<int64_t>::min();
    return number == number ? static_cast<int64_t>(number) : 0;
}

} // namespace

uint64_t TagItem::FromDouble(double number) { return std::bit_cast<uint64_t>(number); }

TagList::TagList(const TagItem* array, bool) {
    if (array == nullptr) return;
    for (; array->tag != 0; ++array)
        Append(*array, IsText(array->tag) ? CopyText(array->Text()) : nullptr);
}

const TagItem* TagList::Find(Tag tag) const {
    for (const TagItem& item : items_) {
        if (item.tag == tag) return &item;
    }
    return nullptr;
}

const TagItem* TagList::FindNext(const TagItem* item) const {
    const TagItem* const end = items_.data() + items_.size();
    for (const TagItem* next = item + 1; next != end; ++next) {
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

void TagList::Set(Tag tag, const CxID& value, bool) {
    if (IsText(tag)) Assign({tag, 0}, CopyText(value));
}

void TagList::SetDouble(Tag tag, double value) { SetNumber(tag, Truncate(value), value); }

void TagList::SetPtr(Tag tag, const void* value) {
    if (KindOf(tag) == TagKind_Pointer) Assign({tag, TagItem::FromPtr(value)}, nullptr);
}

void TagList::Set(const TagItem* array, const void*) {
    if (array == nullptr) return;
    for (; array->tag != 0; ++array)
        SetPair(*array);
}

void TagList::Add(Tag tag, const char* value) {
    if (IsText(tag)) Append({tag, 0}, CopyText(value));
}

void TagList::Add(Tag tag, const CxID& value) { Add(tag, static_cast<const char*>(value)); }

void TagList::SetTags(const TagList* other, bool) {
    if (other == nullptr) return;
    const TagList source(*other); // this list may be its own source
    for (const TagItem& item : source.items_)
        SetPair(item);
}

void TagList::Append(const TagItem& item, Text text) {
    items_.push_back({item.tag, text != nullptr ? TagItem::FromPtr(text->c_str()) : item.value});
    texts_.push_back(std::move(text));
}

void TagList::Assign(const TagItem& item, Text text) {
    const TagItem* const found = Find(item.tag);
    if (found == nullptr) return Append(item, std::move(text));
    const size_t index = static_cast<size_t>(found - items_.data());
    items_[index].value = text != nullptr ? TagItem::FromPtr(text->c_str()) : item.value;
    texts_[index] = std::move(text);
}

void TagList::SetPair(const TagItem& item) {
    Text text = IsText(item.tag) ? CopyText(item.Text()) : nullptr;
    if ((item.tag & TagFlag_Repeatable) != 0) {
        Append(item, std::move(text));
    } else {
        Assign(item, std::move(text));
    }
}

void TagList::SetNumber(Tag tag, int64_t integer, double number) {
    switch (KindOf(tag)) {
    case TagKind_Integer: return Assign({tag, TagItem::FromInt(integer)}, nullptr);
    case TagKind_Double: return Assign({tag, TagItem::FromDouble(number)}, nullptr);
    default: return;
    }
}
