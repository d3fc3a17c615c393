// The fuzzer's bytes, taken one value at a time; zeros once they run out.
#ifndef CAPOCHORDS_FUZZ_FUZZINPUT_H
#define CAPOCHORDS_FUZZ_FUZZINPUT_H

#include <cstddef>
#include <cstdint>

struct FuzzInput {
    const uint8_t* p;
    size_t n;
    uint8_t byte() {
        if (!n) return 0;
        --n;
        return *p++;
    }
    int16_t word() { return static_cast<int16_t>(byte() | byte() << 8); }
};

#endif
