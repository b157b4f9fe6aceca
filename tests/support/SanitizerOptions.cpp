// The options with which the sanitizers run in every test program, however it is started. Without
// sanitizers nobody asks for them.

// What a kind of program adds.
#ifndef MORE_ASAN_OPTIONS
#define MORE_ASAN_OPTIONS ""
#endif

// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizers ask by these names.
extern "C" {

const char* __asan_default_options();
const char* __lsan_default_options();
const char* __ubsan_default_options();

// Refused allocations come back as null, as they do without the sanitizer.
const char* __asan_default_options() {
    return "allocator_may_return_null=1:detect_stack_use_after_return=1" MORE_ASAN_OPTIONS;
}

// The links of the free list of short strings aren't aligned, so the leak search looks at every
// byte.
const char* __lsan_default_options() { return "use_unaligned=1"; }

const char* __ubsan_default_options() { return "print_stacktrace=1"; }
}
// NOLINTEND(bugprone-reserved-identifier)
