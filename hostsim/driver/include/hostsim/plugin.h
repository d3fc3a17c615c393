// Loading a plug-in bundle as the host does: dlopen of its executable image,
// then its exported entry points by name.
#ifndef CAPOCHORDS_HOSTSIM_PLUGIN_H
#define CAPOCHORDS_HOSTSIM_PLUGIN_H

#include <cstdint>
#include <initializer_list>
#include <string>

namespace hostsim {

class Plugin {
  public:
    // Loads the bundle at `bundlePath`. With `freshCopy`, the whole bundle is
    // first copied to a new temporary folder, so that the image and all its
    // statics (bound host functions among them) are new to this process.
    explicit Plugin(const std::string& bundlePath, bool freshCopy = false);
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    bool loaded() const { return handle_ != nullptr; }
    const std::string& error() const { return error_; }
    const std::string& bundlePath() const { return bundle_; }
    const std::string& imagePath() const { return image_; }

    // An exported symbol of the image, or null.
    void* symbol(const char* name) const;
    template <class F> F function(const char* name) const {
        return reinterpret_cast<F>(symbol(name));
    }
    template <class T> T* variable(const char* name) const { return static_cast<T*>(symbol(name)); }

  private:
    std::string bundle_;
    std::string image_;
    std::string tempDir_;
    std::string error_;
    void* handle_ = nullptr;
};

// The first of `relative` (paths from the running program's folder) that
// exists, or the first of them when none does. An installed program and one in
// the build tree both find their files this way, wherever they are moved.
std::string besideProgram(std::initializer_list<const char*> relative);

// The plug-in bundle beside the running program: where an installed copy keeps
// it (`../lib/capochords`), else where the build tree does (`..`).
std::string defaultBundlePath();

} // namespace hostsim

#endif
