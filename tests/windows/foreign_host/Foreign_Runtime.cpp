// A host in the ABI of Windows' main compiler. What that compiler takes for granted of its run time, which
// does not exist here. Compiled so that the loops do not become calls of themselves.

extern "C" {

// Says that floating point is used.
int _fltused = 0;

void* memcpy(void* target, const void* source, unsigned long long size) {
    auto* const to = static_cast<unsigned char*>(target);
    const auto* const from = static_cast<const unsigned char*>(source);
    for (unsigned long long i = 0; i < size; ++i) {
        to[i] = from[i];
    }
    return target;
}

void* memset(void* target, int value, unsigned long long size) {
    auto* const to = static_cast<unsigned char*>(target);
    for (unsigned long long i = 0; i < size; ++i) {
        to[i] = static_cast<unsigned char>(value);
    }
    return target;
}
}
