#pragma once

#include "host/CxID.h"
#include "host/Export.h"

#include <string>
#include <typeinfo>

/// Describes a registered class to the host's script layer. A static object of the module that brings the
/// class.
class ScriptInfo {
public:
    /// No text may be null.
    ///
    /// @param version    1
    /// @param className  the registered class name
    /// @param help       help text of the script layer; may be empty
    /// @param category   category in the script layer; may be empty
    CORVEX_HOST_API ScriptInfo(int version, const char* className, const char* help, const char* category);

    /// Tells which C++ class is described and which it derives from.
    CORVEX_HOST_API void SetTypeInfo(const std::type_info& type, const std::type_info& parentType);

    int Version() const { return version_; }
    const CxID& ClassName() const { return className_; }
    const std::string& Help() const { return help_; }
    const std::string& Category() const { return category_; }
    /// The class described and its parent; null before `SetTypeInfo`.
    const std::type_info* Type() const { return type_; }
    const std::type_info* ParentType() const { return parentType_; }

private:
    int version_;
    CxID className_;
    std::string help_;
    std::string category_;
    const std::type_info* type_ = nullptr;
    const std::type_info* parentType_ = nullptr;
};
