#pragma once

#include <cstddef>
#include <utility>

/// Calls slot `slot` of an object's vtable as a function of type `Result(Object*, Arguments...)`. The slots
/// are read as the Itanium C++ ABI lays them out (2.5.2: one slot for each operation in order of declaration,
/// two for a virtual destructor, the complete one before the deleting one). The object comes from a source
/// that was compiled apart.
template <typename Result, typename... Arguments, typename Object>
Result CallSlot(Object* object, size_t slot, Arguments... arguments) {
    void** const vtable = *reinterpret_cast<void***>(object);
    using Function = Result (*)(Object*, Arguments...);
    return reinterpret_cast<Function>(vtable[slot])(object, std::forward<Arguments>(arguments)...);
}
