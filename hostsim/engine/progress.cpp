// The progress display of mass edits: answers 1 (go on) until the scenario's
// cancel point, 0 from there on, and records every call.
#include "uistate.h"

namespace hostsim {
namespace ui {

void scriptProgress(std::vector<int> cancelAt) {
    for (int k : cancelAt) uiState().cancelPoints.push_back(k);
}

const std::vector<Progress>& progress() { return uiState().progress; }

void setProgressObserver(std::function<void(const Progress&)> observer) {
    uiState().observer = std::move(observer);
}

namespace {

void tell(const Progress& p) {
    if (uiState().observer) uiState().observer(p);
}

// The display of a handle, or null with the reason recorded.
Progress* display(const Call& c, const char* fn) {
    const void* handle = c.ptr<void>(0);
    for (const auto& d : uiState().displays) {
        if (d.get() != handle) continue;
        Progress& p = uiState().progress[d->index];
        if (p.ended) {
            addError(ErrorKind::ProgressEnded,
                     std::string(fn) + ": the progress display has ended");
            return nullptr;
        }
        return &p;
    }
    addError(ErrorKind::UnknownProgress, std::string(fn) + ": not a progress display of this host");
    return nullptr;
}

uint64_t start(Call& c) {
    UiState& s = uiState();
    for (const Progress& p : s.progress)
        if (!p.ended)
            addError(ErrorKind::ProgressNested,
                     "FX_StartMassEdit: started while another display is open");
    s.displays.push_back(std::make_unique<ProgressDisplay>(ProgressDisplay{s.progress.size()}));
    Progress p;
    p.handle = s.displays.back().get();
    p.first = c.ptr<void>(0);
    p.steps = i32(c, 1);
    if (!s.cancelPoints.empty()) {
        p.cancelAt = s.cancelPoints.front();
        s.cancelPoints.pop_front();
    }
    s.progress.push_back(p);
    tell(s.progress.back());
    return addr(p.handle);
}

// A call the host cannot place answers 0: the plug-in stops as if cancelled.
uint64_t step(Call& c) {
    Progress* p = display(c, "FX_MassEditProgress");
    if (!p) return 0;
    int k = static_cast<int>(p->calls.size()) + 1;
    int16_t answer = p->cancelAt > 0 && k >= p->cancelAt ? 0 : 1;
    p->calls.push_back({i16(c, 1), i16(c, 2), i16(c, 3), i16(c, 4), answer});
    tell(*p);
    return static_cast<uint64_t>(answer);
}

uint64_t end(Call& c) {
    if (Progress* p = display(c, "FX_EndMassEdit")) {
        p->ended = true;
        p->cancelled = i16(c, 1);
        tell(*p);
    }
    return 0;
}

}  // namespace

void addProgressBuiltIns(BuiltIns& b) {
    b[static_cast<int>(Fx::FX_StartMassEdit)] = start;
    b[static_cast<int>(Fx::FX_MassEditProgress)] = step;
    b[static_cast<int>(Fx::FX_EndMassEdit)] = end;
}

}  // namespace ui
}  // namespace hostsim
