#pragma once

#include "cameraraw/RavenlightRawAPI.h"
#include "cameraraw/RawPointer.h"

#include <QMap>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// Metadata of a clip or frame, sorted by type. Keys are UTF-8. One thread at a time.
class IOMetadataMap {
public:
    /// Stores a value under a key, in the place of an earlier one of its type. Of the types that `VARIANT`
    /// has, strings, floats, integers of 16 and 32 bits, and arrays of one dimension of the latter two and of
    /// bytes are taken. An array of a single element is refused. Kept.
    /// @param value  stays the caller's; null isn't taken; an array that is refused for its bounds stays
    /// accessed
    /// @return false for what isn't taken, and for an array that the platform can't read, which is reported.
    ///         Throws std::bad_alloc
    bool Add(const std::string& key, VARIANT* value);

    /// Puts the flat form in the place of what `out` has: strings, integers and floats, but no arrays. Throws
    /// std::bad_alloc.
    void ToMap(QMap<QString, QVariant>& out) const;

    void Clear() { *this = {}; }

    const std::map<std::string, std::string>& Strings() const { return strings_; }
    const std::map<std::string, int64_t>& Integers() const { return integers_; }
    const std::map<std::string, float>& Floats() const { return floats_; }
    const std::map<std::string, std::vector<int64_t>>& IntegerArrays() const { return integerArrays_; }
    const std::map<std::string, std::vector<float>>& FloatArrays() const { return floatArrays_; }

private:
    /// Adds `count` elements of a type, as they are in memory.
    using AddElements = void (IOMetadataMap::*)(const std::string& key, const void* elements, size_t count);

    static AddElements AdderOf(VARTYPE type);
    bool AddArray(const std::string& key, SAFEARRAY* array);
    template <typename Element>
    void AddIntegers(const std::string& key, const void* elements, size_t count);
    void AddFloats(const std::string& key, const void* elements, size_t count);

    std::map<std::string, std::string> strings_;
    std::map<std::string, int64_t> integers_;
    std::map<std::string, float> floats_;
    std::map<std::string, std::vector<int64_t>> integerArrays_;
    std::map<std::string, std::vector<float>> floatArrays_;
};

/// Adds what the iterator gives from where it stands, but no table of a LUT (key "lut_data"). An iterator
/// that fails ends it. Throws std::bad_alloc.
/// @param iterator  there; it is released
void ReadIterator(RawPointer<RawMetadataIterator> iterator, IOMetadataMap& map);
