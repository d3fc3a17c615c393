// What a validator check is and what it may use: its plan (bundle, seed,
// level), a seeded generator of its own, and a way to report broken promises
// and to count what it tried. Each check runs in a child process of its own
// (runner.cpp), so a check may crash or hang: that is the runner's to report.
#ifndef CAPOCHORDS_VALIDATE_CHECK_H
#define CAPOCHORDS_VALIDATE_CHECK_H

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace validate {

struct Plan {
    std::string bundle;     // the plug-in bundle under test
    uint64_t seed = 1;      // the run's seed; each check derives its own from it
    int level = 5;          // 1..10: how many scores, fault points, repetitions
    int timeoutSeconds = 0; // the watchdog's limit for every check; 0: each check's own
};

// A number in [low, high] from `r`. The standard distributions and shuffle
// are each library's own, so a seed would give other scores under libc++ than
// under libstdc++; these give the same everywhere.
int pick(std::mt19937_64& r, int low, int high);
template <class T> void shuffle(std::vector<T>& v, std::mt19937_64& r) {
    for (size_t i = v.size(); i > 1; --i)
        std::swap(v[i - 1], v[static_cast<size_t>(pick(r, 0, static_cast<int>(i) - 1))]);
}

// A count between `atLevel1` and `atLevel10`, growing with the plan's level
// by the same factor at each step.
int byLevel(const Plan& plan, int atLevel1, int atLevel10);

// Inside the child: what the check found. Failures and counts travel to the
// runner as they happen, so a crash later in the check loses none of them.
class Context {
  public:
    Context(const Plan& plan, uint64_t seed, int reportFd);
    const Plan& plan() const { return plan_; }
    uint64_t seed() const { return seed_; }
    std::mt19937_64& random() { return random_; }
    // A number in [low, high], from the check's generator.
    int between(int low, int high);

    // A broken promise; the check goes on.
    void fail(const std::string& what);
    // fail(what) unless ok; answers ok.
    bool expect(bool ok, const std::string& what);
    // Adds n to a named count (scores, fault points, cancellations, ...).
    void count(const std::string& what, long n = 1);
    int failures() const { return failures_; }
    // Told by the check when it ends normally.
    void done();

  private:
    void send(const std::string& line);
    const Plan& plan_;
    uint64_t seed_;
    std::mt19937_64 random_;
    int fd_;
    int failures_ = 0;
};

struct Check {
    std::string name; // group/case, used by --only
    std::function<void(Context&)> run;
    int timeoutSeconds = 60; // the watchdog's limit for this check
};
using Checks = std::vector<Check>;

// The groups of checks, each in a file of its own; checks.cpp lists them.
void addLifecycleChecks(const Plan& plan, Checks& out);
// Each host call of a run failing in turn; runs cancelled at every step.
void addFaultChecks(const Plan& plan, Checks& out);
void addCancelChecks(const Plan& plan, Checks& out);
// Hostile host data, hostile input through the dialog, dialog message fuzz.
void addHostileChecks(const Plan& plan, Checks& out);
void addInputChecks(const Plan& plan, Checks& out);
void addDialogFuzzChecks(const Plan& plan, Checks& out);
// Random scores, determinism across processes, undo; process-wide state.
void addScoreChecks(const Plan& plan, Checks& out);
void addProcessChecks(const Plan& plan, Checks& out);
// Each host function missing from the start, in turn.
void addMissingChecks(const Plan& plan, Checks& out);

// Every check of the plan, in the order they run.
Checks allChecks(const Plan& plan);

} // namespace validate

#endif
