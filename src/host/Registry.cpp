#include "host/Registry.h"

#include "host/ImageFormat.h"

#include <algorithm>
#include <strings.h>

namespace {

struct RegistryList {
    std::mutex lock;
    std::vector<Registry*> classes; ///< guarded by `lock`; in the order of registration

    /// Never destroyed: registrations of other modules end at process exit.
    static RegistryList& Get() {
        static RegistryList* const list = new RegistryList;
        return *list;
    }
};

} // namespace

Registry::Registry() = default;

Registry::~Registry() {
    RegistryList& list = RegistryList::Get();
    {
        const std::lock_guard guard(list.lock);
        std::erase(list.classes, this);
    }
    const auto cleanup = reinterpret_cast<RegistryCleanup>(tags_.GetPtr(RegTag_Cleanup, nullptr));
    const bool initRan = started_.has_value() && tags_.GetPtr(RegTag_Init, nullptr) != nullptr;
    if (initRan && cleanup != nullptr) cleanup(this);
}

void Registry::_Init(RegistryType, const CxID& classId, const TagList& tags) {
    classId_ = classId;
    tags_ = tags;
    RegistryList& list = RegistryList::Get();
    const std::lock_guard guard(list.lock);
    list.classes.push_back(this);
}

const char* Registry::ClassName() const { return tags_.GetString(RegTag_ClassName, ""); }

const char* Registry::DisplayName() const { return tags_.GetString(RegTag_DisplayName, ""); }

std::vector<std::string> Registry::Extensions() const {
    std::vector<std::string> extensions;
    for (const TagItem* item = tags_.Find(RegTag_Extension); item != nullptr; item = tags_.FindNext(item)) {
        extensions.emplace_back(item->Text());
    }
    return extensions;
}

bool Registry::HasExtension(const char* extension) const {
    if (extension == nullptr) return false;
    return std::ranges::any_of(Extensions(), [extension](const std::string& claimed) {
        return strcasecmp(claimed.c_str(), extension) == 0;
    });
}

int Registry::Priority() const { return static_cast<int>(tags_.GetLong(RegTag_Priority, 0)); }

bool Registry::CanLoad() const { return tags_.GetLong(RegTag_CanLoad, 0) != 0; }

bool Registry::CanSave() const { return tags_.GetLong(RegTag_CanSave, 0) != 0; }

bool Registry::IsImageFormat() const {
    return tags_.GetPtr(RegTag_ParentClass, nullptr) == &ImageFormat::ClassID;
}

const ScriptInfo* Registry::Script() const {
    return static_cast<const ScriptInfo*>(tags_.GetPtr(RegTag_ScriptInfo, nullptr));
}

bool Registry::Start() {
    const std::lock_guard guard(startLock_);
    if (!started_.has_value()) {
        const auto init = reinterpret_cast<RegistryInit>(tags_.GetPtr(RegTag_Init, nullptr));
        started_ = false; // stays if the init function throws, and is what it sees itself
        started_ = init == nullptr || init(this);
    }
    return *started_;
}

std::unique_ptr<Object> Registry::Create(const ScriptVal& value, const TagList& tags) {
    const auto create = reinterpret_cast<RegistryCreate>(tags_.GetPtr(RegTag_Create, nullptr));
    if (create == nullptr || !Start()) return nullptr;
    return std::unique_ptr<Object>(create(this, value, tags));
}

std::vector<Registry*> Registry::Formats() {
    RegistryList& list = RegistryList::Get();
    const std::lock_guard guard(list.lock);
    std::vector<Registry*> formats;
    std::ranges::copy_if(list.classes, std::back_inserter(formats), &Registry::IsImageFormat);
    return formats;
}

std::vector<Registry*> Registry::FormatsForExtension(const char* extension) {
    std::vector<Registry*> formats = Formats();
    std::erase_if(formats, [extension](const Registry* format) { return !format->HasExtension(extension); });
    std::ranges::stable_sort(formats, std::greater<>(), &Registry::Priority);
    return formats;
}
