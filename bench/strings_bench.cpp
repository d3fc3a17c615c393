// The UTF-16 C-string routines against the standard library's own on the
// same texts: std::char_traits<char16_t> for length and copy,
// std::u16string_view for comparison and search. Texts of 16, 256 and 4,096
// units; every routine has to walk its whole text.
#include "strings16.h"

#include <benchmark/benchmark.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using Traits = std::char_traits<char16_t>;

// Letters and a few units beyond ASCII, never zero.
std::u16string sample(size_t n, char16_t last = u'a') {
    std::u16string s;
    for (size_t i = 0; i < n; ++i) s.push_back(i % 7 == 6 ? char16_t(0x00E9 + i % 5) : char16_t(u'a' + i % 23));
    if (n) s.back() = last;
    return s;
}

std::vector<unsigned short> ours(const std::u16string& s) {
    std::vector<unsigned short> v(s.begin(), s.end());
    v.push_back(0);
    return v;
}

void BM_Length_Ours(benchmark::State& state) {
    auto s = ours(sample(static_cast<size_t>(state.range(0))));
    for (auto _ : state) {
        benchmark::DoNotOptimize(s.data());
        benchmark::DoNotOptimize(fx_strlen(s.data()));
    }
}
void BM_Length_Std(benchmark::State& state) {
    std::u16string s = sample(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(s.data());
        benchmark::DoNotOptimize(Traits::length(s.c_str()));
    }
}

// Equal but for the last unit: the whole text is compared.
void BM_Compare_Ours(benchmark::State& state) {
    auto n = static_cast<size_t>(state.range(0));
    auto a = ours(sample(n, u'a')), b = ours(sample(n, u'b'));
    for (auto _ : state) {
        benchmark::DoNotOptimize(a.data());
        benchmark::DoNotOptimize(fx_strcmp(a.data(), b.data()));
    }
}
void BM_Compare_Std(benchmark::State& state) {
    auto n = static_cast<size_t>(state.range(0));
    std::u16string a = sample(n, u'a'), b = sample(n, u'b');
    for (auto _ : state) {
        benchmark::DoNotOptimize(a.data());
        benchmark::DoNotOptimize(std::u16string_view(a.c_str()).compare(b.c_str()));
    }
}

// A reference that does less: both lengths known beforehand.
void BM_Compare_StdKnownLength(benchmark::State& state) {
    auto n = static_cast<size_t>(state.range(0));
    std::u16string a = sample(n, u'a'), b = sample(n, u'b');
    for (auto _ : state) {
        benchmark::DoNotOptimize(a.data());
        benchmark::DoNotOptimize(Traits::compare(a.c_str(), b.c_str(), n + 1));
    }
}

// The text sought is the last eight units; its first unit recurs all along.
void BM_Search_Ours(benchmark::State& state) {
    auto n = static_cast<size_t>(state.range(0));
    std::u16string text = sample(n, u'#');
    auto t = ours(text), s = ours(text.substr(n - 8));
    for (auto _ : state) {
        benchmark::DoNotOptimize(t.data());
        benchmark::DoNotOptimize(fx_strstr(t.data(), s.data()));
    }
}
void BM_Search_Std(benchmark::State& state) {
    auto n = static_cast<size_t>(state.range(0));
    std::u16string text = sample(n, u'#'), sought = text.substr(n - 8);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.data());
        benchmark::DoNotOptimize(std::u16string_view(text.c_str()).find(sought.c_str()));
    }
}

// Into a room one unit larger than the text.
void BM_Copy_Ours(benchmark::State& state) {
    auto n = static_cast<size_t>(state.range(0));
    auto src = ours(sample(n));
    std::vector<unsigned short> dest(n + 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(src.data());
        fx_strcpy(dest.data(), dest.size(), src.data());
        benchmark::ClobberMemory();
    }
}
void BM_Copy_Std(benchmark::State& state) {
    auto n = static_cast<size_t>(state.range(0));
    std::u16string src = sample(n);
    std::vector<char16_t> dest(n + 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(src.data());
        size_t length = Traits::length(src.c_str());
        if (length > dest.size() - 1) length = dest.size() - 1;
        Traits::copy(dest.data(), src.c_str(), length);
        dest[length] = 0;
        benchmark::ClobberMemory();
    }
}

#define SIZES Arg(16)->Arg(256)->Arg(4096)
BENCHMARK(BM_Length_Ours)->SIZES;
BENCHMARK(BM_Length_Std)->SIZES;
BENCHMARK(BM_Compare_Ours)->SIZES;
BENCHMARK(BM_Compare_Std)->SIZES;
BENCHMARK(BM_Compare_StdKnownLength)->SIZES;
BENCHMARK(BM_Search_Ours)->SIZES;
BENCHMARK(BM_Search_Std)->SIZES;
BENCHMARK(BM_Copy_Ours)->SIZES;
BENCHMARK(BM_Copy_Std)->SIZES;

}  // namespace

BENCHMARK_MAIN();
