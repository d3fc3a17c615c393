// What the plug-in shares with the host's process: locale, floating-point
// environment, working directory, environment variables, signal handlers
// and the signal mask. The host finds them as it left them after loading,
// start-up, every kind of run and termination.
#include "check.h"
#include "randomscore.h"
#include "session.h"

#include "hostsim/ui.h"

#include <algorithm>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstring>
#include <locale>
#include <set>
#include <unistd.h>

extern char** environ;

namespace validate {
namespace {

namespace ui = hostsim::ui;

struct ProcessState {
    std::string cLocale, cppLocale;
    int rounding = 0;
    int exceptionFlags = 0;
    std::vector<uint8_t> fenv;
    std::string cwd;
    std::set<std::string> environment;
    std::vector<std::string> handlers; // per signal: handler, flags, mask
    std::string mask;

    static std::string maskText(const sigset_t& set) {
        std::string out;
        for (int sig = 1; sig < NSIG; ++sig)
            out += sigismember(&set, sig) == 1 ? '1' : '0';
        return out;
    }

    static ProcessState now() {
        ProcessState s;
        const char* c = std::setlocale(LC_ALL, nullptr);
        s.cLocale = c ? c : "(null)";
        s.cppLocale = std::locale().name();
        s.rounding = std::fegetround();
        s.exceptionFlags = std::fetestexcept(FE_ALL_EXCEPT);
        std::fenv_t env;
        std::fegetenv(&env);
        s.fenv.assign(reinterpret_cast<const uint8_t*>(&env),
                      reinterpret_cast<const uint8_t*>(&env) + sizeof env);
#if defined(__x86_64__)
        // The x87 part keeps where its last instruction was and the condition
        // codes of its last comparison: traces of any code that ran, not
        // settings. The control word, the exception bits, the tag word and
        // MXCSR are what a plug-in must give back.
        static_assert(sizeof(std::fenv_t) >= 32, "the x87 environment followed by MXCSR");
        s.fenv[4] &= 0x3F;
        s.fenv[5] = 0;
        std::fill(s.fenv.begin() + 12, s.fenv.begin() + 28, uint8_t{0});
#endif
        char buf[4096];
        s.cwd = getcwd(buf, sizeof buf) ? buf : "(none)";
        for (char** e = environ; e && *e; ++e)
            s.environment.insert(*e);
        for (int sig = 1; sig < NSIG; ++sig) {
            struct sigaction a;
            std::memset(&a, 0, sizeof a);
            if (sigaction(sig, nullptr, &a) != 0) {
                s.handlers.push_back("none");
                continue;
            }
            char line[64];
            std::snprintf(line, sizeof line, "%p %x ", reinterpret_cast<void*>(a.sa_handler),
                          static_cast<unsigned>(a.sa_flags));
            s.handlers.push_back(line + maskText(a.sa_mask));
        }
        sigset_t blocked;
        sigemptyset(&blocked);
        sigprocmask(SIG_BLOCK, nullptr, &blocked);
        s.mask = maskText(blocked);
        return s;
    }
};

// What changed between two states, one clause per difference.
std::string changes(const ProcessState& a, const ProcessState& b) {
    std::string out;
    auto add = [&out](const std::string& s) { out += (out.empty() ? "" : "; ") + s; };
    if (a.cLocale != b.cLocale) add("C locale " + a.cLocale + " became " + b.cLocale);
    if (a.cppLocale != b.cppLocale) add("global locale " + a.cppLocale + " became " + b.cppLocale);
    if (a.rounding != b.rounding)
        add("rounding mode " + std::to_string(a.rounding) + " became " +
            std::to_string(b.rounding));
    if (a.exceptionFlags != b.exceptionFlags)
        add("floating-point exception flags " + std::to_string(a.exceptionFlags) + " became " +
            std::to_string(b.exceptionFlags));
    if (a.fenv != b.fenv) {
        std::string bytes;
        for (size_t i = 0; i < a.fenv.size() && i < b.fenv.size(); ++i)
            if (a.fenv[i] != b.fenv[i])
                bytes += " " + std::to_string(i) + ":" + std::to_string(a.fenv[i]) + "->" +
                         std::to_string(b.fenv[i]);
        add("the floating-point environment changed (bytes" + bytes + ")");
    }
    if (a.cwd != b.cwd) add("working directory " + a.cwd + " became " + b.cwd);
    for (const std::string& v : a.environment)
        if (!b.environment.count(v)) add("environment lost or changed " + v.substr(0, v.find('=')));
    for (const std::string& v : b.environment)
        if (!a.environment.count(v)) add("environment gained " + v);
    for (size_t sig = 0; sig < a.handlers.size() && sig < b.handlers.size(); ++sig)
        if (a.handlers[sig] != b.handlers[sig])
            add("the action of signal " + std::to_string(sig + 1) + " changed");
    if (a.mask != b.mask) add("the signal mask changed");
    return out;
}

void processState(Context& cx) {
    // The session sets these two itself; set first, they let the state before
    // loading be compared with the state after it.
    setenv("LC_ALL", "en_US.UTF-8", 1);
    setenv("LANG", "en", 1);
    const ProcessState unloaded = ProcessState::now();
    Session s(cx);
    if (!s.loaded()) return;
    const std::string loading = changes(unloaded, ProcessState::now());
    cx.expect(loading.empty(), "after loading: " + loading);
    cx.count("state comparisons");
    const ProcessState found = ProcessState::now();
    auto expectFound = [&](const std::string& after) {
        const std::string d = changes(found, ProcessState::now());
        cx.expect(d.empty(), "after " + after + ": " + d);
        cx.count("state comparisons");
    };
    if (!s.start()) return;
    expectFound("start-up");

    const RandomScore sc = randomScore(cx.random());
    sc.build();
    struct Case {
        const char* what;
        bool showLabel, remove, cancelDialog;
        int cancelAt;
    };
    const Case cases[] = {{"a confirmed run", false, false, false, 0},
                          {"a run with a label", true, false, false, 0},
                          {"a removal", false, true, false, 0},
                          {"a run cancelled in its progress display", true, false, false, 1},
                          {"a cancelled dialog", true, false, true, 0}};
    for (const Case& c : cases) {
        RunSettings settings = sc.settings;
        settings.showLabel = c.showLabel;
        settings.label = "Capo 4";
        settings.remove = c.remove;
        ui::scriptProgress({c.cancelAt});
        if (sc.wholeDocument) ui::scriptAlerts({1});
        std::vector<ui::Step> steps = sc.dialog(settings);
        if (c.cancelDialog) steps.back() = ui::click(control::kCancel);
        ui::scriptDialog(steps);
        const score::Region region = sc.region, whole = sc.whole();
        s.invoke(sc.wholeDocument ? nullptr : &region, whole);
        s.checkHost(c.what);
        expectFound(c.what);
    }
    s.terminate();
    expectFound("termination");
}

} // namespace

void addProcessChecks(const Plan&, Checks& out) {
    out.push_back({"process/state", processState});
}

} // namespace validate
