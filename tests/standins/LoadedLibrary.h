#pragma once

#include <cstdlib>
#include <dlfcn.h>
#include <iostream>

/// A shared library that tests call by its exports, for the process's life. What is missing ends the process.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const char* path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        if (handle_ != nullptr) return;
        std::cerr << dlerror() << std::endl;
        std::abort();
    }

    template <typename Function>
    void Find(const char* name, Function& function) const {
        function = reinterpret_cast<Function>(dlsym(handle_, name));
        if (function != nullptr) return;
        std::cerr << "missing: " << name << std::endl;
        std::abort();
    }

private:
    void* handle_;
};
