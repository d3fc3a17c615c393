// The validator's runner: one child process per check, a watchdog on each,
// and a report that survives whatever the plug-in does to the child.
#include "validate.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace validate {
namespace {

using Clock = std::chrono::steady_clock;

enum class Status { Pass, Fail, Crashed };

struct Outcome {
    std::string name;
    uint64_t seed = 0;
    Status status = Status::Pass;
    std::vector<std::string> failures;
    std::string crash;             // the signal, "timeout" or the exit status
    std::vector<std::string> tail;  // the child's last lines of output, when it crashed
    std::map<std::string, long> counts;
    long milliseconds = 0;
};

uint64_t fnv1a(const std::string& s) {
    uint64_t h = 1469598103934665603ull;
    for (unsigned char c : s) {
        h ^= c;
        h *= 1099511628211ull;
    }
    return h;
}

uint64_t splitmix(uint64_t x) {
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

// A check's own seed: the same for the same run seed and name, whatever else runs.
uint64_t checkSeed(uint64_t seed, const std::string& name) { return splitmix(seed ^ fnv1a(name)); }

std::string selfPath() {
    char buf[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0) return "zemlo-host";
    buf[n] = 0;
    return buf;
}

std::string shellQuoted(const std::string& s) {
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string regexEscaped(const std::string& s) {
    std::string out;
    for (char c : s) {
        if (std::strchr("\\^$.|?*+()[]{}", c)) out += '\\';
        out += c;
    }
    return out;
}

std::string replayCommand(const Options& o, const std::string& name) {
    return selfPath() + " validate --bundle " + shellQuoted(o.plan.bundle) + " --seed " +
           std::to_string(o.plan.seed) + " --level " + std::to_string(o.plan.level) +
           (o.plan.timeoutSeconds > 0 ? " --timeout " + std::to_string(o.plan.timeoutSeconds) : std::string()) + " --only " +
           shellQuoted("^" + regexEscaped(name) + "$");
}

std::string signalName(int sig) {
    const char* d = strsignal(sig);
    return "signal " + std::to_string(sig) + (d ? std::string(" (") + d + ")" : std::string());
}

// The child: runs the check with its output going to `outputFd` and its
// findings to `reportFd`, and never returns.
[[noreturn]] void child(const Check& check, const Plan& plan, uint64_t seed, int reportFd, int outputFd) {
    dup2(outputFd, STDOUT_FILENO);
    dup2(outputFd, STDERR_FILENO);
    close(outputFd);
    Context cx(plan, seed, reportFd);
    try {
        check.run(cx);
        cx.done();
    } catch (const std::exception& e) {
        cx.fail(std::string("exception: ") + e.what());
        cx.done();
    } catch (...) {
        cx.fail("exception of an unknown type");
        cx.done();
    }
    std::fflush(nullptr);
    _exit(0);
}

// The last few lines of the child's output that say something.
std::vector<std::string> tailOf(int fd) {
    std::string all;
    lseek(fd, 0, SEEK_SET);
    char buf[4096];
    ssize_t n;
    while ((n = read(fd, buf, sizeof buf)) > 0) all.append(buf, static_cast<size_t>(n));
    std::vector<std::string> lines;
    size_t at = 0;
    while (at < all.size()) {
        size_t end = all.find('\n', at);
        if (end == std::string::npos) end = all.size();
        std::string line = all.substr(at, end - at);
        if (line.find_first_not_of(" \t=") != std::string::npos) lines.push_back(line);
        at = end + 1;
    }
    // A sanitizer's summary says more than its stack; keep it and the first lines.
    std::vector<std::string> out;
    for (const std::string& l : lines)
        if (l.find("ERROR:") != std::string::npos || l.find("SUMMARY:") != std::string::npos ||
            l.find("runtime error") != std::string::npos)
            out.push_back(l);
    if (out.empty())
        for (size_t i = lines.size() > 5 ? lines.size() - 5 : 0; i < lines.size(); ++i)
            out.push_back(lines[i]);
    if (out.size() > 6) out.resize(6);
    return out;
}

void takeLine(const std::string& line, Outcome& o, bool& finished) {
    if (line.empty()) return;
    const std::string rest = line.size() > 2 ? line.substr(2) : std::string();
    switch (line[0]) {
    case 'F': o.failures.push_back(rest); break;
    case 'C': {
        size_t space = rest.rfind(' ');
        if (space != std::string::npos) o.counts[rest.substr(0, space)] += std::atol(rest.c_str() + space + 1);
        break;
    }
    case 'D': finished = true; break;
    default: break;
    }
}

Outcome runOne(const Check& check, const Options& options) {
    Outcome o;
    o.name = check.name;
    o.seed = checkSeed(options.plan.seed, check.name);
    const auto start = Clock::now();
    int pipeFds[2];
    char outputName[] = "/tmp/zemlo-validate-XXXXXX";
    int outputFd = mkstemp(outputName);
    if (outputFd >= 0) unlink(outputName);
    if (outputFd < 0 || pipe(pipeFds) != 0) {
        o.status = Status::Crashed;
        o.crash = std::string("cannot start the check: ") + std::strerror(errno);
        return o;
    }
    std::fflush(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        close(pipeFds[0]);
        child(check, options.plan, o.seed, pipeFds[1], outputFd);
    }
    close(pipeFds[1]);
    if (pid < 0) {
        close(pipeFds[0]);
        close(outputFd);
        o.status = Status::Crashed;
        o.crash = std::string("cannot fork: ") + std::strerror(errno);
        return o;
    }

    const int limit = options.plan.timeoutSeconds > 0 ? options.plan.timeoutSeconds : check.timeoutSeconds;
    const auto deadline = start + std::chrono::seconds(limit);
    std::string pending;
    bool finished = false, timedOut = false;
    for (;;) {
        const long left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            timedOut = true;
            break;
        }
        pollfd p{pipeFds[0], POLLIN, 0};
        int r = poll(&p, 1, static_cast<int>(std::min<long>(left, INT_MAX)));
        if (r < 0 && errno == EINTR) continue;
        if (r == 0) continue;
        char buf[4096];
        ssize_t n = read(pipeFds[0], buf, sizeof buf);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;  // the child has gone, or closed its end
        pending.append(buf, static_cast<size_t>(n));
        size_t nl;
        while ((nl = pending.find('\n')) != std::string::npos) {
            takeLine(pending.substr(0, nl), o, finished);
            pending.erase(0, nl + 1);
        }
    }
    close(pipeFds[0]);
    if (timedOut) kill(pid, SIGKILL);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    o.milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();

    if (timedOut) o.crash = "timeout after " + std::to_string(limit) + " s";
    else if (WIFSIGNALED(status)) o.crash = signalName(WTERMSIG(status));
    else if (WIFEXITED(status) && WEXITSTATUS(status) != 0) o.crash = "exit status " + std::to_string(WEXITSTATUS(status));
    else if (!finished) o.crash = "the check ended without finishing";
    if (!o.crash.empty()) {
        o.status = Status::Crashed;
        o.tail = tailOf(outputFd);
    } else if (!o.failures.empty()) {
        o.status = Status::Fail;
    }
    close(outputFd);
    return o;
}

const char* statusName(Status s) {
    switch (s) {
    case Status::Pass: return "PASS";
    case Status::Fail: return "FAIL";
    case Status::Crashed: return "CRASHED";
    }
    return "?";
}

std::string jsonString(const std::string& s) {
    std::string out = "\"";
    for (unsigned char c : s) {
        if (c == '"' || c == '\\') out += '\\', out += static_cast<char>(c);
        else if (c < 0x20) {
            char esc[8];
            std::snprintf(esc, sizeof esc, "\\u%04x", c);
            out += esc;
        } else out += static_cast<char>(c);
    }
    return out + "\"";
}

bool writeJson(const std::string& path, const Options& options, const std::vector<Outcome>& outcomes,
               const std::map<std::string, long>& totals, int passed, int failed, long ms) {
    FILE* f = std::fopen(path.c_str(), "w");
    if (!f) return false;
    std::fprintf(f, "{\n  \"bundle\": %s,\n  \"seed\": %llu,\n  \"level\": %d,\n",
                 jsonString(options.plan.bundle).c_str(),
                 static_cast<unsigned long long>(options.plan.seed), options.plan.level);
    std::fprintf(f, "  \"passed\": %d,\n  \"failed\": %d,\n  \"milliseconds\": %ld,\n  \"counts\": {", passed,
                 failed, ms);
    const char* sep = "";
    for (const auto& [k, v] : totals) {
        std::fprintf(f, "%s%s: %ld", sep, jsonString(k).c_str(), v);
        sep = ", ";
    }
    std::fprintf(f, "},\n  \"checks\": [\n");
    for (size_t i = 0; i < outcomes.size(); ++i) {
        const Outcome& o = outcomes[i];
        std::fprintf(f, "    {\"name\": %s, \"status\": %s, \"seed\": %llu, \"milliseconds\": %ld, ",
                     jsonString(o.name).c_str(), jsonString(statusName(o.status)).c_str(),
                     static_cast<unsigned long long>(o.seed), o.milliseconds);
        if (!o.crash.empty()) std::fprintf(f, "\"crash\": %s, ", jsonString(o.crash).c_str());
        std::fprintf(f, "\"failures\": [");
        for (size_t k = 0; k < o.failures.size(); ++k)
            std::fprintf(f, "%s%s", k ? ", " : "", jsonString(o.failures[k]).c_str());
        std::fprintf(f, "], \"replay\": %s}%s\n", jsonString(replayCommand(options, o.name)).c_str(),
                     i + 1 < outcomes.size() ? "," : "");
    }
    std::fprintf(f, "  ]\n}\n");
    return std::fclose(f) == 0;
}

bool parseNumber(const char* text, long low, long high, long* out) {
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(text, &end, 10);
    if (end == text || *end || errno || v < low || v > high) return false;
    *out = v;
    return true;
}

}  // namespace

bool parseOptions(int argc, char** argv, int first, Options* o, std::string* error) {
    for (int i = first; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool takesValue = arg == "--bundle" || arg == "--seed" || arg == "--level" ||
                                arg == "--only" || arg == "--json" || arg == "--timeout";
        if (arg == "--list") {
            o->list = true;
            continue;
        }
        if (!takesValue) {
            *error = "unknown option " + arg;
            return false;
        }
        if (i + 1 >= argc) {
            *error = arg + " needs a value";
            return false;
        }
        const char* value = argv[++i];
        if (arg == "--bundle") o->plan.bundle = value;
        else if (arg == "--only") o->only = value;
        else if (arg == "--json") o->json = value;
        else if (arg == "--seed") {
            char* end = nullptr;
            errno = 0;
            unsigned long long v = std::strtoull(value, &end, 0);
            if (end == value || *end || errno || *value == '-') {
                *error = std::string("--seed wants a number, not ") + value;
                return false;
            }
            o->plan.seed = v;
        } else if (arg == "--timeout") {
            long seconds = 0;
            if (!parseNumber(value, 1, 3600, &seconds)) {
                *error = std::string("--timeout wants 1 to 3600 seconds, not ") + value;
                return false;
            }
            o->plan.timeoutSeconds = static_cast<int>(seconds);
        } else {
            long level = 0;
            if (!parseNumber(value, 1, 10, &level)) {
                *error = std::string("--level wants 1 to 10, not ") + value;
                return false;
            }
            o->plan.level = static_cast<int>(level);
        }
    }
    if (!o->only.empty()) {
        try {
            std::regex check(o->only);
        } catch (const std::regex_error& e) {
            *error = "--only: " + std::string(e.what());
            return false;
        }
    }
    return true;
}

int run(const Options& options) {
    const Checks checks = allChecks(options.plan);
    std::vector<const Check*> chosen;
    const std::regex only(options.only.empty() ? std::string(".*") : options.only);
    for (const Check& c : checks)
        if (std::regex_search(c.name, only)) chosen.push_back(&c);
    if (options.list) {
        for (const Check* c : chosen) std::printf("%s\n", c->name.c_str());
        return 0;
    }
    std::printf("Validating %s (seed %llu, level %d): %zu checks\n", options.plan.bundle.c_str(),
                static_cast<unsigned long long>(options.plan.seed), options.plan.level, chosen.size());
    std::fflush(stdout);

    const auto start = Clock::now();
    std::vector<Outcome> outcomes;
    std::map<std::string, long> totals;
    int passed = 0, failed = 0;
    for (const Check* c : chosen) {
        Outcome o = runOne(*c, options);
        for (const auto& [k, v] : o.counts) totals[k] += v;
        (o.status == Status::Pass ? passed : failed)++;
        std::printf("%-7s %s (seed %llu, %ld ms)", statusName(o.status), o.name.c_str(),
                    static_cast<unsigned long long>(o.seed), o.milliseconds);
        if (!o.crash.empty()) std::printf(": %s", o.crash.c_str());
        std::printf("\n");
        const size_t shown = std::min<size_t>(o.failures.size(), 5);
        for (size_t i = 0; i < shown; ++i) std::printf("        %s\n", o.failures[i].c_str());
        if (o.failures.size() > shown) std::printf("        ... and %zu more\n", o.failures.size() - shown);
        for (const std::string& l : o.tail) std::printf("        | %s\n", l.c_str());
        std::printf("        replay: %s\n", replayCommand(options, o.name).c_str());
        std::fflush(stdout);
        outcomes.push_back(std::move(o));
    }
    const long ms = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    if (!totals.empty()) {
        std::printf("Counts:");
        const char* sep = " ";
        for (const auto& [k, v] : totals) {
            std::printf("%s%s %ld", sep, k.c_str(), v);
            sep = ", ";
        }
        std::printf("\n");
    }
    std::printf("Time: %.1f s\n", static_cast<double>(ms) / 1000.0);
    if (!options.json.empty() && !writeJson(options.json, options, outcomes, totals, passed, failed, ms)) {
        std::fprintf(stderr, "zemlo-host: cannot write %s\n", options.json.c_str());
        ++failed;
    }
    std::printf("%d passed, %d failed\n", passed, failed);
    return failed || chosen.empty() ? 1 : 0;
}

}  // namespace validate
