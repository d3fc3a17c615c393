// zemlo-host: the simulated Zemlo host on the command line. Loads the
// plug-in bundle as the real host does, drives it through its start-up
// (main, version, init, enumeration, status, termination) and reports what
// it learnt; with `run`, it also chooses the plug-in's menu item once on a
// score (run.h).
#include "run.h"
#include "validate.h"

#include "hostsim/host.h"
#include "hostsim/plugin.h"
#include "hostsim/ui.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

using zemlo::MenuItemRecord;

// Menu items beyond this many mean a plug-in that never says "no more".
constexpr int kMaxItems = 64;

int usage() {
    std::fprintf(stderr,
                 "usage: zemlo-host [--bundle PATH] [--lang CODE] | --version\n"
                 "       zemlo-host run [--bundle PATH] [--lang CODE] [--score sample]\n"
                 "                  [--unit evpus|inches|centimeters|points|picas|spaces]\n"
                 "                  [--capo N] [--distance X] [--label TEXT] [--no-label]\n"
                 "                  [--chord-flag] [--remove] [--cancel]\n"
                 "                  [--whole-document | --selection FIRST-LAST]\n"
                 "       zemlo-host apply [SCORE.musicxml|.mxl] [--bundle PATH] [--lang CODE] [--capo N]\n"
                 "                  [--distance X] [--unit evpus|inches|centimeters|points|picas|spaces]\n"
                 "                  [--label TEXT | --no-label] [--chord-flag] [--remove]\n"
                 "                  [--measures FIRST-LAST] [--staves FIRST-LAST] [-o OUT.musicxml]\n"
                 "       zemlo-host validate [--bundle PATH] [--seed N] [--level 1..10] [--only REGEX]\n"
                 "                  [--json FILE] [--timeout SECONDS] [--list]\n");
    return 2;
}

// A text of the record for the terminal: UTF-16 up to its zero unit, as UTF-8.
std::string printable(const uint16_t* units, size_t room) {
    size_t n = 0;
    while (n < room && units[n]) ++n;
    CFStringRef s = CFStringCreateWithCharacters(nullptr, units, static_cast<CFIndex>(n));
    std::string out;
    if (s) {
        char buf[1024];
        if (CFStringGetCString(s, buf, sizeof buf, kCFStringEncodingUTF8)) out = buf;
        CFRelease(s);
    }
    return out;
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

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && !std::strcmp(argv[1], "--version")) {
        std::printf("zemlo-host %s\nplug-in bundle: %s\n", ZEMLO_HOST_VERSION,
                    hostsim::defaultBundlePath().c_str());
        return 0;
    }
    if (argc > 1 && !std::strcmp(argv[1], "validate")) return validateCommand(argc, argv);
    std::string bundle = hostsim::defaultBundlePath();
    const bool run = argc > 1 && !std::strcmp(argv[1], "run");
    const bool apply = argc > 1 && !std::strcmp(argv[1], "apply");
    zemlo::RunOptions options;
    zemlo::ApplyOptions applyOptions;
    for (int i = run || apply ? 2 : 1; i < argc; ++i) {
        std::string error;
        if (run && zemlo::parseRunOption(argc, argv, &i, &options, &error)) {
            continue;
        } else if (apply && zemlo::parseApplyOption(argc, argv, &i, &applyOptions, &error)) {
            continue;
        } else if (!error.empty()) {
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
    hostsim::Plugin plugin(bundle);
    if (!plugin.loaded()) {
        std::fprintf(stderr, "zemlo-host: cannot load %s: %s\n", bundle.c_str(), plugin.error().c_str());
        return 1;
    }
    // apply speaks of the score only; the plug-in's start-up and end go unreported.
    const int console = apply ? dup(STDOUT_FILENO) : -1;
    auto report = [console](bool on) {
        if (console < 0) return;
        std::fflush(stdout);
        const int target = on ? console : open("/dev/null", O_WRONLY);
        dup2(target, STDOUT_FILENO);
        if (!on) close(target);
    };
    report(false);
    std::printf("Loaded plug-in %s\n", plugin.imagePath().c_str());
    // The plug-in's dialogs are described in its own bundle.
    hostsim::ui::setDialogFolder(plugin.bundlePath() + "/Contents/Resources");
    // The host runs on macOS: it answers that it is a Mach-O host.
    hostsim::setResult(hostsim::Fx::FX_IsMachO, 1);

    using MainFn = int (*)(int, char**);
    using VersionFn = uint32_t (*)(uint32_t);
    using InitFn = int16_t (*)(void*, int32_t*);
    using EnumerateFn = int16_t (*)(void*, int16_t, MenuItemRecord*);
    using StatusFn = int16_t (*)(int16_t);
    using TerminateFn = void (*)(void*);
    auto pluginMain = plugin.function<MainFn>("main");
    auto version = plugin.function<VersionFn>("ZemloExtensionVersion");
    auto init = plugin.function<InitFn>("ZemloExtensionInit");
    auto enumerate = plugin.function<EnumerateFn>("ZemloExtensionEnumerate_UTF16");
    auto status = plugin.function<StatusFn>("ZemloExtensionGetMenuStatus");
    auto terminate = plugin.function<TerminateFn>("ZemloExtensionTerminate");
    auto invoke = plugin.function<zemlo::InvokeFn>("ZemloExtensionInvoke");
    if (!pluginMain || !version || !init || !enumerate || !status || !terminate || !invoke) {
        std::fprintf(stderr, "zemlo-host: the bundle lacks its entry points\n");
        return 1;
    }
    char name[] = "zemlo-host";
    char* args[] = {name, nullptr};
    int ready = pluginMain(1, args);
    std::printf("Bound to the host engine: %s\n", ready ? "yes" : "no");
    std::printf("Interface version: 0x%08X\n", version(0));
    int32_t initValue = -1;
    int16_t initialised = init(nullptr, &initValue);
    std::printf("Initialised: %s (value %d)\n", initialised == 1 ? "yes" : "no", initValue);

    int items = 0;
    for (; items < kMaxItems; ++items) {
        MenuItemRecord record;
        std::memset(&record, 0, sizeof record);
        if (!enumerate(nullptr, static_cast<int16_t>(items), &record)) break;
        std::printf("Menu item %d: %s\n", items, printable(record.itemText, 128).c_str());
        std::printf("  second text: %s\n", printable(record.secondText, 128).c_str());
        std::printf("  undo text: %s\n", printable(record.undoText, 128).c_str());
        std::printf("  status: %d\n", status(static_cast<int16_t>(items)));
    }
    std::printf("Menu items: %d\n", items);
    report(true);
    int ran = run && items > 0 ? zemlo::runCommand(invoke, options) : 0;
    if (apply) ran = items > 0 ? zemlo::applyCommand(invoke, applyOptions) : 1;
    report(false);
    if (run) std::printf("\n");
    terminate(nullptr);
    std::printf("Terminated\n");
    size_t alerts = hostsim::count(hostsim::Fx::FX_AlertMessage);
    if (alerts) std::printf("Alerts shown: %zu\n", alerts);
    return ready && initialised == 1 && items > 0 && ran == 0 ? 0 : 1;
}
