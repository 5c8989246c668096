// The static program has no use for shared objects of the machine: character sets and account modules that
// are made for another C library would crash it. The linker (--wrap) sends the C library's requests to load
// one here.
extern "C" void* __wrap___libc_dlopen_mode(const char* /*pszName*/, int /*nMode*/) {
    return nullptr;
}
