// A check's side of the report: one line per finding, written at once.
#include "check.h"

#include <cerrno>
#include <cmath>
#include <unistd.h>

namespace validate {

int byLevel(const Plan& plan, int atLevel1, int atLevel10) {
    const int level = plan.level < 1 ? 1 : plan.level > 10 ? 10 : plan.level;
    if (level == 1) return atLevel1;
    if (level == 10) return atLevel10;
    // Geometric between the two: each level multiplies the work by the same
    // factor, so the middle levels stay quick and level 10 goes far.
    if (atLevel1 > 0 && atLevel10 > atLevel1)
        return static_cast<int>(std::lround(
            atLevel1 * std::pow(static_cast<double>(atLevel10) / atLevel1, (level - 1) / 9.0)));
    return atLevel1 + (atLevel10 - atLevel1) * (level - 1) / 9;
}

Context::Context(const Plan& plan, uint64_t seed, int reportFd)
    : plan_(plan), seed_(seed), random_(seed), fd_(reportFd) {}

int pick(std::mt19937_64& r, int low, int high) {
    if (high <= low) return low;
    const uint64_t span = static_cast<uint64_t>(static_cast<int64_t>(high) - low) + 1;
    // Draws past the last whole multiple of the span are drawn again, so that
    // every number is equally likely.
    const uint64_t limit = UINT64_MAX - UINT64_MAX % span;
    uint64_t x = r();
    while (x >= limit)
        x = r();
    return static_cast<int>(low + static_cast<int64_t>(x % span));
}

int Context::between(int low, int high) {
    return pick(random_, low, high);
}

void Context::send(const std::string& line) {
    std::string out = line;
    for (char& c : out)
        if (c == '\n' || c == '\r') c = ' ';
    out += '\n';
    size_t at = 0;
    while (at < out.size()) {
        ssize_t n = write(fd_, out.data() + at, out.size() - at);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        at += static_cast<size_t>(n);
    }
}

void Context::fail(const std::string& what) {
    ++failures_;
    // A check that fails everywhere says so often enough in its first lines.
    if (failures_ <= 50) send("F " + what);
}

bool Context::expect(bool ok, const std::string& what) {
    if (!ok) fail(what);
    return ok;
}

void Context::count(const std::string& what, long n) {
    send("C " + what + " " + std::to_string(n));
}

void Context::done() {
    send("D");
}

} // namespace validate
