// Refers to a function nobody defines: linking it must fail.
extern "C" int capochords_nobody_defines_this(int);
extern "C" __attribute__((visibility("default"))) int canary(int x) {
    return capochords_nobody_defines_this(x);
}
