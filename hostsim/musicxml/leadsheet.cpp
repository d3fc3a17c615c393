// A lead sheet's way through the simulated host: read, built as records,
// written back. Each step's work is in a file of its own: reader.cpp,
// mapping.cpp, writer.cpp.
#include "leadsheet.h"

#include "sheet.h"

namespace hostsim {
namespace musicxml {

LeadSheet::LeadSheet(std::unique_ptr<Sheet> sheet) : s_(std::move(sheet)) {}
LeadSheet::~LeadSheet() = default;

std::unique_ptr<LeadSheet> LeadSheet::read(const std::string& path, std::string* error) {
    std::unique_ptr<Sheet> sheet = readSheet(path, error);
    return sheet ? std::unique_ptr<LeadSheet>(new LeadSheet(std::move(sheet))) : nullptr;
}

void LeadSheet::build() {
    buildRecords(*s_);
}

bool LeadSheet::write(const std::string& path, std::string* error, bool diagrams) {
    std::vector<Patch> patches;
    for (int staff = 1; staff <= staves(); ++staff) {
        writeCapoChords(*s_, staff, diagrams, &patches);
        writeLabels(*s_, staff, &patches);
    }
    writeAttributes(*s_, &patches);
    return save(*s_, std::move(patches), path, error);
}

std::string LeadSheet::title() const {
    return s_->title;
}
int LeadSheet::staves() const {
    return static_cast<int>(s_->staves.size());
}
int LeadSheet::measures() const {
    return s_->measures;
}
size_t LeadSheet::chordCount() const {
    return s_->harmonies.size();
}

std::string LeadSheet::measureNumber(int position) const {
    return position >= 1 && position <= measures() ? s_->numbers[static_cast<size_t>(position - 1)]
                                                   : std::string();
}

std::string LeadSheet::staffName(int staff) const {
    if (staff < 1 || staff > staves()) return "";
    const Staff& st = s_->staff(staff);
    if (st.part->staves == 1) return st.part->name;
    // The staff number stays in sight when a listing cuts the name at ten.
    const std::string number = " " + std::to_string(st.number);
    std::string name = st.part->name.substr(0, 10 - std::min<size_t>(10, number.size()));
    while (!name.empty() && name.back() == ' ')
        name.pop_back();
    return name + number;
}

Key LeadSheet::key(int staff, int measure) const {
    if (staff < 1 || staff > staves() || measure < 1 || measure > s_->measures) return {};
    return s_->staff(staff).part->keys[static_cast<size_t>(measure - 1)];
}

std::vector<ConcertChord> LeadSheet::concertChords() const {
    std::vector<ConcertChord> out;
    for (const auto& h : s_->harmonies) {
        const ChordFields& f = h->fields;
        ConcertChord c;
        c.root = {f.rootStep, f.rootAlter};
        c.kind = kindValue(f.kind);
        c.hasBass = f.bassStep >= 0;
        c.bass = {f.bassStep, f.bassAlter};
        c.key = s_->parts[static_cast<size_t>(h->part)]->keys[static_cast<size_t>(h->measure - 1)];
        c.measure = h->measure;
        out.push_back(c);
    }
    return out;
}

int LeadSheet::fileCapo() const {
    for (const auto& st : s_->staves)
        if (!st->capoChords.empty()) return st->capoChords.front().record.fret();
    for (const auto& st : s_->staves)
        if (st->capoFret > 0) return st->capoFret;
    return 0;
}

const std::vector<int>& LeadSheet::leftAlone() const {
    return s_->leftAlone;
}

const std::vector<std::string>& LeadSheet::warnings() const {
    return s_->warnings;
}

} // namespace musicxml
} // namespace hostsim
