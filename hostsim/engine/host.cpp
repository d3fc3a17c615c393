// State of the simulated host: presence, programmed results, behaviours,
// scheduled faults and the call log.
#include "engine.h"
#include "hostsim/document.h"

#include <array>
#include <map>
#include <memory>

namespace hostsim {
namespace {

struct State {
    std::array<bool, kFxCount> present;
    std::array<int, kFxCount> lookups{};
    std::array<uint64_t, kFxCount> results{};
    std::array<size_t, kFxCount> counts{};
    std::array<Handler, kFxCount> handlers;
    std::array<bool, kFxCount> programmed{};  // setResult since the last reset
    BuiltIns builtIns;
    std::map<std::pair<int, size_t>, bool> faults;  // (fx, call number) to fail
    std::vector<Call> log;
    bool logging = true;
    bool checking = true;
    // The calls running now, one per nesting level (a dialog's handler calls
    // in from inside FX_Dialog); each keeps its argument room between calls.
    std::vector<std::unique_ptr<Call>> running;
    size_t depth = 0;
    State() {
        present.fill(true);
        addUiBuiltIns(builtIns);
        addScoreBuiltIns(builtIns);
        addEditBuiltIns(builtIns);
        for (int i = 0; i < kFxCount; ++i)
            if (servedByDocument(static_cast<Fx>(i))) builtIns[i] = [](Call& c) { return doc::serve(c); };
    }
};

State& state() {
    static State* s = new State();  // outlives every static destructor that may still call in
    return *s;
}

Kind kindOf(const char* k) {
    static const std::map<std::string, Kind> m = {
        {"I16", Kind::I16}, {"U16", Kind::U16}, {"I32", Kind::I32}, {"PTR", Kind::PTR},
        {"BOOL", Kind::BOOL}, {"DBL", Kind::DBL}, {"VER", Kind::VER}, {"VOID", Kind::VOID}};
    return m.at(k);
}

std::vector<Kind> kindsOf(const char* list) {
    std::vector<Kind> out;
    std::string s(list);
    std::string cur;
    for (char c : s) {
        if (c == '(' || c == ' ') continue;
        if (c == ',' || c == ')') {
            if (!cur.empty()) out.push_back(kindOf(cur.c_str()));
            cur.clear();
        } else {
            cur.push_back(c);
        }
    }
    return out;
}

const std::array<FxInfo, kFxCount>& table() {
    static const std::array<FxInfo, kFxCount> t = {{
#define FX_ENTRY(result, name, params, args, kinds, missing, step)                           \
    FxInfo{#name, kindOf(#result), kindsOf(#kinds)},
#include "fxtable.def"
#undef FX_ENTRY
    }};
    return t;
}

int idx(Fx fx) { return static_cast<int>(fx); }

}  // namespace

const FxInfo& info(Fx fx) { return table()[idx(fx)]; }

bool fxByName(const std::string& name, Fx* out) {
    for (int i = 0; i < kFxCount; ++i) {
        if (name == table()[i].name) {
            *out = static_cast<Fx>(i);
            return true;
        }
    }
    return false;
}

void reset() {
    State& s = state();
    s.present.fill(true);
    s.lookups.fill(0);
    s.results.fill(0);
    s.counts.fill(0);
    for (auto& h : s.handlers) h = nullptr;
    s.programmed.fill(false);
    s.faults.clear();
    s.log.clear();
    s.logging = true;
    s.checking = true;
    resetDocument();
    resetUi();
    resetScore();
    resetEdits();
    resetBuffers();
}

void setPresent(Fx fx, bool present) { state().present[idx(fx)] = present; }
void setAllPresent(bool present) { state().present.fill(present); }
bool isPresent(Fx fx) { return state().present[idx(fx)]; }
int lookups(Fx fx) { return state().lookups[idx(fx)]; }
void setResult(Fx fx, uint64_t raw) {
    state().results[idx(fx)] = raw;
    state().programmed[idx(fx)] = true;
}
void setHandler(Fx fx, Handler h) { state().handlers[idx(fx)] = std::move(h); }

void failCall(Fx fx, int k) {
    if (k < 1) return;
    State& s = state();
    s.faults[{idx(fx), s.counts[idx(fx)] + static_cast<size_t>(k)}] = true;
}

void clearFaults() { state().faults.clear(); }
void setLogging(bool on) { state().logging = on; }
void setChecking(bool on) { state().checking = on; }
bool checking() { return state().checking; }
const std::vector<Call>& calls() { return state().log; }
void clearCalls() { state().log.clear(); }
size_t count(Fx fx) { return state().counts[idx(fx)]; }

bool resolve(Fx fx) {
    State& s = state();
    ++s.lookups[idx(fx)];
    return s.present[idx(fx)];
}

namespace {

// The call of the current nesting level, reused from the last call at that level.
class Running {
  public:
    Running(State& s, Fx fx, const uint64_t* args, size_t n) : s_(s) {
        if (s.depth == s.running.size()) s.running.push_back(std::make_unique<Call>());
        Call& c = *s.running[s.depth++];
        c.fx = fx;
        c.args.assign(args, args + n);
        c.result = 0;
        c.faulted = false;
        call_ = &c;
    }
    ~Running() { --s_.depth; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    Call& call() { return *call_; }

  private:
    State& s_;
    Call* call_;
};

uint64_t behave(State& s, Call& c) {
    const int i = idx(c.fx);
    if (s.handlers[i]) return s.handlers[i](c);
    if (!s.programmed[i] && s.builtIns[i]) return s.builtIns[i](c);
    return s.results[i];
}

}  // namespace

uint64_t dispatch(Fx fx, const uint64_t* args, size_t n) {
    State& s = state();
    const size_t number = ++s.counts[idx(fx)];
    Running running(s, fx, args, n);
    Call& c = running.call();
    auto fault = s.faults.find({idx(fx), number});
    if (fault != s.faults.end()) {
        c.faulted = true;
        s.faults.erase(fault);
    }
    if (!s.checking) {
        if (!c.faulted) c.result = behave(s, c);
        return c.result;
    }
    // Logged before the behaviour runs, so that calls made from inside it
    // (a dialog calling its handler) follow the call that caused them.
    const size_t at = s.log.size();
    if (s.logging) s.log.push_back(c);
    if (!c.faulted) {
        // The behaviour sees the plug-in's buffers through guarded copies:
        // the call's own arguments are pointed at them, the log keeps the
        // plug-in's.
        Staging staging(c);
        if (staging.refused()) {
            c.faulted = true;
        } else {
            c.result = behave(s, c);
            staging.finish();
        }
    }
    if (s.logging && at < s.log.size()) {
        s.log[at].result = c.result;
        s.log[at].faulted = c.faulted;
    }
    return c.result;
}

}  // namespace hostsim
