#include "host/ScriptInfo.h"

ScriptInfo::ScriptInfo(int version, const char* className, const char* help, const char* category)
    : version_(version), className_(className, true), help_(help), category_(category) {}

void ScriptInfo::SetTypeInfo(const std::type_info& type, const std::type_info& parentType) {
    type_ = &type;
    parentType_ = &parentType;
}
