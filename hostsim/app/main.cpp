// zemlo-host: the simulated Zemlo host on the command line. Loads the
// plug-in bundle as the real host does and reports what it learnt.
#include "hostsim/host.h"
#include "hostsim/plugin.h"
#include "hostsim/ui.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

int usage() {
    std::fprintf(stderr, "usage: zemlo-host [--bundle PATH]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::string bundle = hostsim::defaultBundlePath();
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--bundle") && i + 1 < argc) bundle = argv[++i];
        else return usage();
    }
    hostsim::Plugin plugin(bundle);
    if (!plugin.loaded()) {
        std::fprintf(stderr, "zemlo-host: cannot load %s: %s\n", bundle.c_str(), plugin.error().c_str());
        return 1;
    }
    std::printf("Loaded plug-in %s\n", plugin.imagePath().c_str());
    // The plug-in's dialogs are described in its own bundle.
    hostsim::ui::setDialogFolder(plugin.bundlePath() + "/Contents/Resources");

    using MainFn = int (*)(int, char**);
    using VersionFn = uint32_t (*)(uint32_t);
    auto pluginMain = plugin.function<MainFn>("main");
    auto version = plugin.function<VersionFn>("ZemloExtensionVersion");
    if (!pluginMain || !version) {
        std::fprintf(stderr, "zemlo-host: the bundle lacks its entry points\n");
        return 1;
    }
    char name[] = "zemlo-host";
    char* args[] = {name, nullptr};
    int ready = pluginMain(1, args);
    std::printf("Bound to the host engine: %s\n", ready ? "yes" : "no");
    std::printf("Interface version: 0x%08X\n", version(0));
    return ready ? 0 : 1;
}
