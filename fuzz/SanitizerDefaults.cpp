// The AddressSanitizer settings every fuzz program starts with. A fuzz run
// allocates and frees for every input, and recording the call stack of each
// allocation cost a tenth of the rate; a problem found reports where the bad
// access happened either way. To see where the memory was allocated and
// freed as well, run the program on the input it wrote with
// ASAN_OPTIONS=malloc_context_size=30, which overrides these defaults.

// The sanitizer's hook, called before it reads ASAN_OPTIONS when a program
// defines it; the name is the sanitizer's.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __asan_default_options();

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __asan_default_options()
{
    return "malloc_context_size=0";
}
