// The validator finds planted faults: zemlo-host validate run on broken
// copies of the bundle (tests/sabotage) reports the matching checks as
// failed or crashed, with the reason, in its JSON report, its closing line
// and its exit status, while the real bundle passes the same checks.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Report {
    int exitStatus = -1;
    std::string output;  // what zemlo-host printed
    std::string json;
    // The JSON report's line of a check; empty when it is not there.
    std::string check(const std::string& name) const {
        std::istringstream in(json);
        for (std::string line; std::getline(in, line);)
            if (line.find("{\"name\": \"" + name + "\"") != std::string::npos) return line;
        return "";
    }
    std::string closingLine() const {
        const size_t end = output.find_last_not_of('\n');
        const size_t start = output.rfind('\n', end);
        return output.substr(start == std::string::npos ? 0 : start + 1,
                             end - (start == std::string::npos ? 0 : start + 1) + 1);
    }
};

std::string brokenBundle(const char* name) { return std::string(BROKEN_BUNDLES) + "/" + name + ".bundle"; }

// Runs the validator on `bundle` for the checks `only` matches. A segmentation
// fault is to end the check by its signal in sanitizer builds as well.
Report validate(const std::string& bundle, const std::string& only, const std::string& extra = "") {
    char jsonName[] = "/tmp/validate-test-XXXXXX";
    const int fd = mkstemp(jsonName);
    EXPECT_GE(fd, 0);
    if (fd >= 0) close(fd);
    const std::string command = "ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}handle_segv=0 '" +
                                std::string(ZEMLO_HOST) + "' validate --bundle '" + bundle + "' --only '" +
                                only + "' --json '" + jsonName + "' " + extra + " 2>&1";
    Report r;
    FILE* p = popen(command.c_str(), "r");
    EXPECT_NE(p, nullptr) << command;
    if (!p) return r;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.output.append(buf, n);
    const int status = pclose(p);
    r.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream in(jsonName);
    std::ostringstream text;
    text << in.rdbuf();
    r.json = text.str();
    unlink(jsonName);
    return r;
}

bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(Validator, FindsEachPlantedFaultAndPassesTheRealBundle) {
    struct Case {
        const char* bundle;
        std::vector<std::string> checks;  // the checks that must catch it
        const char* status;
        std::vector<std::string> says;  // in each check's report line
    };
    const Case cases[] = {
        {"BrokenOverrun",
         {"lifecycle/run", "missing/FX_RedrawMusic", "random/1", "hostile/chords-17"},
         "FAIL",
         {"wrote outside the", "byte 0 past the end"}},
        {"BrokenOpenEdit",
         {"lifecycle/run", "random/1", "cancel/first-run/small", "fault/re-run/reference"},
         "FAIL",
         {"ZemloEditDepth is ", R"(edit \"Capo Chords\" left open)"}},
        {"BrokenNullHandle",
         {"missing/FX_StartMassEdit", "fault/first-run/FX_StartMassEdit/first"},
         "CRASHED",
         {"\"crash\": \"signal 11"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bundle);
        std::string only;
        for (const std::string& name : c.checks) only += (only.empty() ? "^" : "|^") + name + "$";
        const std::string counts = std::to_string(c.checks.size());

        const Report broken = validate(brokenBundle(c.bundle), only);
        EXPECT_EQ(broken.exitStatus, 1) << broken.output;
        EXPECT_EQ(broken.closingLine(), "0 passed, " + counts + " failed") << broken.output;
        EXPECT_TRUE(has(broken.json, "\"failed\": " + counts + ",")) << broken.json;
        for (const std::string& name : c.checks) {
            const std::string line = broken.check(name);
            EXPECT_TRUE(has(line, std::string("\"status\": \"") + c.status + "\"")) << name << ": " << line;
            for (const std::string& s : c.says) EXPECT_TRUE(has(line, s)) << name << ": " << line;
        }

        const Report real = validate(CAPOCHORDS_BUNDLE, only);
        EXPECT_EQ(real.exitStatus, 0) << real.output;
        EXPECT_EQ(real.closingLine(), counts + " passed, 0 failed") << real.output;
        for (const std::string& name : c.checks)
            EXPECT_TRUE(has(real.check(name), "\"status\": \"PASS\"")) << real.check(name);
    }
}

// A run that never returns is ended by the watchdog and reported as such.
TEST(Validator, ReportsAHangingCheckAsATimeout) {
    const Report r = validate(brokenBundle("BrokenHang"), "^lifecycle/run$", "--timeout 1");
    EXPECT_EQ(r.exitStatus, 1) << r.output;
    const std::string line = r.check("lifecycle/run");
    EXPECT_TRUE(has(line, "\"status\": \"CRASHED\"")) << line;
    EXPECT_TRUE(has(line, "\"crash\": \"timeout after 1 s\"")) << line;
    EXPECT_TRUE(has(r.output, "--timeout 1 --only")) << "the replay command drops the limit: " << r.output;
    EXPECT_EQ(r.closingLine(), "0 passed, 1 failed") << r.output;
}

}  // namespace
