// Options that the sanitizers of a sanitizer build start with.
//
// allocator_may_return_null: the tests of huge sizes need the null that the allocator gives, where sanitizers
// end the process by default. ignore_noninstrumented_modules: oneTBB is built without ThreadSanitizer, which
// sees its memory accesses through intercepted functions but not the order between them.

#define SANITIZER_HOOK extern "C" __attribute__((visibility("default"))) const char*

SANITIZER_HOOK __asan_default_options() { return "allocator_may_return_null=1"; }
SANITIZER_HOOK __tsan_default_options() {
    return "allocator_may_return_null=1:ignore_noninstrumented_modules=1";
}

// libx265 keeps a block of each encoder that it frees; tests make their material with it. libx264 keeps one
// of each encoder that refuses its size.
SANITIZER_HOOK __lsan_default_suppressions() { return "leak:libx264\nleak:libx265"; }
// The command's words on standard error are counted by tests.
SANITIZER_HOOK __lsan_default_options() { return "print_suppressions=0"; }
