// Fresh copies of the plug-in's images for tests: every copy has its own
// statics, so forwarders bind anew and counters start at zero.
#ifndef CAPOCHORDS_TESTS_FRESH_H
#define CAPOCHORDS_TESTS_FRESH_H

#include "hostsim/host.h"
#include "hostsim/plugin.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace testing_support {

// The test image (the plug-in plus capochords_probe_symbol), copied and loaded.
class Probe {
  public:
    explicit Probe(const std::string& bundle = CAPOCHORDS_PROBE_BUNDLE)
        : plugin_(std::make_unique<hostsim::Plugin>(bundle, /*freshCopy=*/true)) {
        lookup_ = plugin_->function<void* (*)(const char*)>("capochords_probe_symbol");
    }
    bool ok() const { return plugin_->loaded() && lookup_; }
    // Loaded, and bound by main unless `bind` is false: ASSERT_TRUE(p.ready()).
    ::testing::AssertionResult ready(bool bind = true) {
        if (!ok()) return ::testing::AssertionFailure() << "probe not loaded: " << error();
        if (bind && this->bind() != 1) return ::testing::AssertionFailure() << "main did not bind";
        return ::testing::AssertionSuccess();
    }
    std::string error() const { return plugin_->error(); }
    hostsim::Plugin& plugin() { return *plugin_; }

    // An internal function or forwarder by name; fails the test when absent.
    template <class F> F fn(const char* name) {
        void* p = lookup_ ? lookup_(name) : nullptr;
        EXPECT_NE(p, nullptr) << "probe has no symbol " << name;
        return reinterpret_cast<F>(p);
    }
    void* raw(const char* name) { return lookup_ ? lookup_(name) : nullptr; }
    template <class T> T* var(const char* name) { return plugin_->variable<T>(name); }

    // Binds the copy to the host as the host does: main with one argument.
    int bind() {
        auto m = plugin_->function<int (*)(int, char**)>("main");
        char arg0[] = "zemlo";
        char* argv[] = {arg0, nullptr};
        return m ? m(1, argv) : -1;
    }

  private:
    std::unique_ptr<hostsim::Plugin> plugin_;
    void* (*lookup_)(const char*) = nullptr;
};

// A test that starts and ends with a fresh simulated host.
class FreshHost : public ::testing::Test {
  protected:
    void SetUp() override { hostsim::reset(); }
    void TearDown() override { hostsim::reset(); }
};

}  // namespace testing_support

#endif
