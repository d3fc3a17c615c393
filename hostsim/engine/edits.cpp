// Undoable edits: a snapshot of the document per open edit, restored on
// cancel; on commit a second one, so that Undo takes back what changed between
// (deferred until the document changes again or Undo asks for it).
#include "hostsim/edits.h"
#include "uistate.h"

namespace hostsim {
namespace edits {
namespace {

struct EditState {
    std::vector<Edit> edits;
    std::vector<size_t> open;  // indices into edits, innermost last
    std::vector<std::string> errors;
};

EditState& editState() {
    static EditState* s = new EditState();  // outlives static destructors that may still call in
    return *s;
}

uint64_t start(Call& c, bool utf16) {
    EditState& s = editState();
    Edit e;
    e.utf16 = utf16;
    e.depth = static_cast<int>(s.open.size());
    const char* fn = utf16 ? "FX_StartZemloEdit_UTF16" : "FX_StartZemloEdit";
    if (!c.ptr<void>(0)) s.errors.push_back(std::string(fn) + ": no name");
    else if (utf16) e.name = ui::utf8(std::u16string(c.ptr<char16_t>(0)));
    else e.name = ui::utf8(ui::fromMacRoman(c.ptr<char>(0)));
    e.before = doc::snapshot();
    s.open.push_back(s.edits.size());
    s.edits.push_back(std::move(e));
    return 1;
}

uint64_t end(Call&) {
    EditState& s = editState();
    if (s.open.empty()) {
        s.errors.push_back("FX_EndZemloEdit: no edit open");
        return 0;
    }
    const size_t i = s.open.back();
    s.edits[i].state = State::Committed;
    deferSnapshot([i](doc::Document now) {
        EditState& later = editState();
        if (i < later.edits.size()) later.edits[i].after = std::move(now);
    });
    s.open.pop_back();
    return 1;
}

uint64_t cancel(Call&) {
    EditState& s = editState();
    if (s.open.empty()) {
        s.errors.push_back("FX_CancelZemloEdit: no edit open");
        return 0;
    }
    Edit& e = s.edits[s.open.back()];
    doc::restore(e.before);
    e.state = State::Cancelled;
    s.open.pop_back();
    return 0;
}

// Every entry the edit changed goes back to what it was before the edit.
template <class Map> void takeBack(Map& now, const Map& before, const Map& after) {
    for (const auto& entry : after) {
        auto was = before.find(entry.first);
        if (was == before.end()) now.erase(entry.first);
        else if (was->second != entry.second) now[entry.first] = was->second;
    }
    for (const auto& entry : before)
        if (!after.count(entry.first)) now[entry.first] = entry.second;
}

}  // namespace

const std::vector<Edit>& all() {
    takeDeferredSnapshot();
    return editState().edits;
}
size_t openCount() { return editState().open.size(); }

bool undo() {
    EditState& s = editState();
    if (!s.open.empty()) return false;  // the host undoes nothing while an edit runs
    takeDeferredSnapshot();
    for (auto it = s.edits.rbegin(); it != s.edits.rend(); ++it) {
        if (it->depth != 0 || it->state != State::Committed) continue;
        doc::Document now = doc::snapshot();
        takeBack(now.records, it->before.records, it->after.records);
        takeBack(now.frames, it->before.frames, it->after.frames);
        doc::restore(now);
        it->state = State::Undone;
        return true;
    }
    return false;
}

std::vector<std::string> errors() {
    std::vector<std::string> out = editState().errors;
    for (size_t i : editState().open)
        out.push_back("edit \"" + editState().edits[i].name + "\" left open");
    return out;
}

}  // namespace edits

void resetEdits() { edits::editState() = edits::EditState(); }

void addEditBuiltIns(BuiltIns& b) {
    b[static_cast<int>(Fx::FX_StartZemloEdit)] = [](Call& c) { return edits::start(c, false); };
    b[static_cast<int>(Fx::FX_StartZemloEdit_UTF16)] = [](Call& c) { return edits::start(c, true); };
    b[static_cast<int>(Fx::FX_EndZemloEdit)] = edits::end;
    b[static_cast<int>(Fx::FX_CancelZemloEdit)] = edits::cancel;
}

}  // namespace hostsim
