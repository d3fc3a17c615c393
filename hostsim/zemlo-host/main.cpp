// zemlo-host: the simulated Zemlo host on the command line. Loads the
// plug-in bundle, starts it as the real host does and reports what it
// learnt; `apply` runs its command on a lead sheet, `validate` puts it
// through the validator.
#include "apply.h"
#include "validate.h"

#include "hostsim/driver.h"
#include "hostsim/host.h"
#include "hostsim/plugin.h"
#include "hostsim/ui.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

namespace driver = hostsim::driver;
using hostsim::ui::utf8;

// Menu items beyond this many mean a plug-in that never says "no more".
constexpr int kMaxItems = 64;

int usage() {
    std::fprintf(
        stderr,
        "usage: zemlo-host [--bundle PATH] [--lang CODE] | --version\n"
        "       zemlo-host apply [SCORE.musicxml|.mxl] [--bundle PATH] [--lang CODE] [--capo N]\n"
        "                  [--distance X] [--unit evpus|inches|centimeters|points|picas|spaces]\n"
        "                  [--label TEXT | --no-label] [--chord-flag] [--remove]\n"
        "                  [--measures FIRST-LAST | --positions FIRST-LAST] [--staves FIRST-LAST]\n"
        "                  [--whole-document] [--records] [--diagrams] [-o OUT.musicxml]\n"
        "                  (--measures: numbers as the score prints them; --positions: from 1;\n"
        "                  --capo auto: the advisor's fret)\n"
        "       zemlo-host suggest SCORE.musicxml|.mxl\n"
        "       zemlo-host validate [--bundle PATH] [--seed N] [--level 1..10] [--only REGEX]\n"
        "                  [--json FILE] [--timeout SECONDS] [--list]\n");
    return 2;
}

// zemlo-host validate: the validator runs its checks in child processes.
int validateCommand(int argc, char** argv) {
    validate::Options options;
    options.plan.bundle = hostsim::defaultBundlePath();
    std::string error;
    if (!validate::parseOptions(argc, argv, 2, &options, &error)) {
        std::fprintf(stderr, "zemlo-host: %s\n", error.c_str());
        return usage();
    }
    // The replay commands must work from any folder.
    char* full = realpath(options.plan.bundle.c_str(), nullptr);
    if (!full) {
        std::fprintf(stderr, "zemlo-host: no bundle at %s\n", options.plan.bundle.c_str());
        return 1;
    }
    options.plan.bundle = full;
    std::free(full);
    return validate::run(options);
}

void printStartUp(const driver::StartUp& s) {
    std::printf("Bound to the host engine: %s\n", s.bound ? "yes" : "no");
    std::printf("Interface version: 0x%08X\n", s.version);
    std::printf("Initialised: %s (value %d)\n", s.initialised == 1 ? "yes" : "no", s.initValue);
    for (size_t i = 0; i < s.items.size(); ++i) {
        std::printf("Menu item %zu: %s\n", i, utf8(s.items[i].text).c_str());
        std::printf("  second text: %s\n", utf8(s.items[i].second).c_str());
        std::printf("  undo text: %s\n", utf8(s.items[i].undo).c_str());
        std::printf("  status: %d\n", s.items[i].status);
    }
    std::printf("Menu items: %zu\n", s.items.size());
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && !std::strcmp(argv[1], "--version")) {
        std::printf("zemlo-host %s\nplug-in bundle: %s\n", ZEMLO_HOST_VERSION,
                    hostsim::defaultBundlePath().c_str());
        return 0;
    }
    if (argc > 1 && !std::strcmp(argv[1], "validate")) return validateCommand(argc, argv);
    if (argc > 1 && !std::strcmp(argv[1], "suggest")) return zemlo::suggestCommand(argc, argv);
    std::string bundle = hostsim::defaultBundlePath();
    const bool apply = argc > 1 && !std::strcmp(argv[1], "apply");
    zemlo::ApplyOptions options;
    for (int i = apply ? 2 : 1; i < argc; ++i) {
        std::string error;
        if (apply && zemlo::parseApplyOption(argc, argv, &i, &options, &error)) continue;
        if (!error.empty()) {
            std::fprintf(stderr, "zemlo-host: %s\n", error.c_str());
            return usage();
        } else if (!std::strcmp(argv[i], "--bundle") && i + 1 < argc) {
            bundle = argv[++i];
        } else if (!std::strcmp(argv[i], "--lang") && i + 1 < argc) {
            // The plug-in speaks the user's language, which it reads from the locale.
            ++i;
            setenv("LC_ALL", argv[i], 1);
            setenv("LANG", argv[i], 1);
        } else {
            return usage();
        }
    }
    // A user's run: nothing reads the host's logs, nor needs its guarded
    // copies of the plug-in's buffers (the tests and the validator do).
    if (apply) hostsim::setChecking(false);
    hostsim::Plugin plugin(bundle);
    if (!plugin.loaded()) {
        std::fprintf(stderr, "zemlo-host: cannot load %s: %s\n", bundle.c_str(),
                     plugin.error().c_str());
        return 1;
    }
    driver::attach(plugin);
    auto terminate = plugin.function<void (*)(void*)>("ZemloExtensionTerminate");
    auto invoke = plugin.function<driver::InvokeFn>("ZemloExtensionInvoke");
    driver::StartUp s;
    if (terminate && invoke) s = driver::start(plugin, kMaxItems);
    if (!terminate || !invoke || !s.missing.empty()) {
        std::fprintf(stderr, "zemlo-host: the bundle lacks its entry points\n");
        return 1;
    }
    // apply speaks of the score only.
    if (!apply) {
        std::printf("Loaded plug-in %s\n", plugin.imagePath().c_str());
        printStartUp(s);
    }
    const int ran = apply ? (s.items.empty() ? 1 : zemlo::applyCommand(invoke, options)) : 0;
    terminate(nullptr);
    if (!apply) {
        std::printf("Terminated\n");
        if (size_t alerts = hostsim::count(hostsim::Fx::FX_AlertMessage))
            std::printf("Alerts shown: %zu\n", alerts);
    }
    return s.bound && s.initialised == 1 && !s.items.empty() && ran == 0 ? 0 : 1;
}
