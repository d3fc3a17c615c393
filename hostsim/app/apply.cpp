// zemlo-host apply: the command on a MusicXML lead sheet, written back out.
#include "run.h"

#include "hostsim/edits.h"
#include "hostsim/plugin.h"
#include "hostsim/score.h"
#include "hostsim/ui.h"
#include "leadsheet.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <unistd.h>

namespace zemlo {
namespace {

namespace edits = hostsim::edits;
namespace mx = hostsim::musicxml;
namespace score = hostsim::score;
namespace ui = hostsim::ui;

bool range(const std::string& text, int* first, int* last) {
    const char* s = text.c_str();
    char* end = nullptr;
    const long a = std::strtol(s, &end, 10);
    if (end == s) return false;
    long b = a;
    if (*end == '-') {
        const char* second = end + 1;
        b = std::strtol(second, &end, 10);
        if (end == second) return false;
    }
    if (*end || a < 1 || b < a || b > 32767) return false;
    *first = static_cast<int>(a);
    *last = static_cast<int>(b);
    return true;
}

bool wholeNumber(const std::string& text, long low, long high) {
    char* end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    return !text.empty() && *end == 0 && v >= low && v <= high;
}

bool decimal(const std::string& text) {
    char* end = nullptr;
    std::strtod(text.c_str(), &end);
    return !text.empty() && *end == 0;
}

std::string stem(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const size_t dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

void printChords(const mx::LeadSheet& sheet, int firstStaff, int lastStaff, int firstMeasure, int lastMeasure) {
    for (int staff = firstStaff; staff <= lastStaff; ++staff) {
        for (int m = firstMeasure; m <= lastMeasure; ++m) {
            const auto chords = score::chords(static_cast<int16_t>(staff), static_cast<int16_t>(m));
            if (chords.empty()) continue;
            std::string concert, capo;
            int fret = 0;
            for (const score::ChordRecord& c : chords) {
                std::string& line = c.isCapo() ? capo : concert;
                line += (line.empty() ? "" : "  ") + mx::chordName(c, sheet.fifths(staff, m));
                if (c.isCapo()) fret = c.fret();
            }
            std::printf("  %-10s m%-3d ", sheet.partName(staff).substr(0, 10).c_str(), m);
            if (fret) std::printf("%-24s | capo %d: %s\n", concert.c_str(), fret, capo.c_str());
            else std::printf("%s\n", concert.c_str());
        }
    }
}

// The host's progress display as a bar on the terminal.
void drawProgress(const ui::Progress& p) {
    if (!isatty(STDERR_FILENO)) return;
    const size_t done = p.calls.size();
    const size_t steps = p.steps > 0 ? static_cast<size_t>(p.steps) : 1;
    const size_t width = 30, filled = std::min(width, done * width / steps);
    std::fprintf(stderr, "\r  [%s%s] %zu/%zu", std::string(filled, '#').c_str(),
                 std::string(width - filled, '.').c_str(), std::min(done, steps), steps);
    if (p.ended) std::fprintf(stderr, p.cancelled ? " cancelled\n" : "\n");
    std::fflush(stderr);
}

constexpr uint16_t kNotice = 0x40;

int fail(const std::string& message) {
    std::fprintf(stderr, "zemlo-host: %s\n", message.c_str());
    return 1;
}

}  // namespace

// The bundled sample: an installed copy's, else the source tree's.
std::string sampleScore() {
    const std::string installed =
        hostsim::besideProgram({"../share/capochords/samples/lantern-road.musicxml"});
    std::error_code ec;
    return std::filesystem::exists(installed, ec) ? installed : ZEMLO_SAMPLE_SCORE;
}

int applyCommand(InvokeFn invoke, const ApplyOptions& a) {
    const RunOptions& o = a.run;
    std::string error;
    const std::string path = a.score.empty() ? sampleScore() : a.score;
    const std::string out = a.output.empty() ? stem(path) + ".capo.musicxml" : a.output;
    if (out.size() > 4 && out.compare(out.size() - 4, 4, ".mxl") == 0)
        return fail("-o " + out + ": zemlo-host writes uncompressed MusicXML; name it .musicxml");
    std::unique_ptr<mx::LeadSheet> sheet = mx::LeadSheet::read(path, &error);
    if (!sheet) return fail(error);
    if (sheet->chordCount() == 0) return fail(path + " holds no chord symbols (<harmony>)");
    if (a.firstMeasure && a.lastMeasure > sheet->measures())
        return fail("--measures " + std::to_string(a.firstMeasure) + "-" + std::to_string(a.lastMeasure) +
                    ": the score has measures 1-" + std::to_string(sheet->measures()));
    if (a.firstStaff && a.lastStaff > sheet->staves())
        return fail("--staves " + std::to_string(a.firstStaff) + "-" + std::to_string(a.lastStaff) +
                    ": the score has staves 1-" + std::to_string(sheet->staves()));
    sheet->build();
    setUnitByName(o.unit);

    RunOptions answers = o;
    // A capo already in the file is the fret the user starts from.
    if (answers.capo.empty() && sheet->fileCapo()) answers.capo = std::to_string(sheet->fileCapo());
    const int firstStaff = a.firstStaff ? a.firstStaff : 1, lastStaff = a.firstStaff ? a.lastStaff : sheet->staves();
    const int firstMeasure = a.firstMeasure ? a.firstMeasure : 1;
    const int lastMeasure = a.firstMeasure ? a.lastMeasure : sheet->measures();
    const size_t slash = path.find_last_of('/');
    const std::string file = slash == std::string::npos ? path : path.substr(slash + 1);
    std::printf("Score \"%s\" (%s): %d staves, %d measures, %zu chords\n", sheet->title().c_str(), file.c_str(),
                sheet->staves(), sheet->measures(), sheet->chordCount());
    std::printf("Chords before:\n");
    printChords(*sheet, 1, sheet->staves(), 1, sheet->measures());

    score::Region whole = score::region(1, 1, static_cast<int16_t>(sheet->staves()),
                                        static_cast<int16_t>(sheet->measures()));
    score::Region selection = score::region(static_cast<int16_t>(firstStaff), static_cast<int16_t>(firstMeasure),
                                            static_cast<int16_t>(lastStaff), static_cast<int16_t>(lastMeasure));
    std::string shown, confirmed;
    ui::scriptDialog(dialogScript(answers, &shown, &confirmed));
    ui::setProgressObserver(drawProgress);
    std::printf("Capo chords: staves %d-%d, measures %d-%d\n", firstStaff, lastStaff, firstMeasure, lastMeasure);
    std::fflush(stdout);
    const int16_t result = invoke(nullptr, 0, &selection, &whole);
    ui::setProgressObserver(nullptr);
    std::printf("Dialog confirmed: %s\n", confirmed.c_str());

    for (const ui::Error& e : ui::errors()) error += (error.empty() ? "" : "; ") + e.text;
    for (const std::string& e : edits::errors()) error += (error.empty() ? "" : "; ") + e;
    if (!error.empty()) return fail("the host saw faults of the plug-in: " + error + "; nothing written");
    // A notice tells what happened (nothing to change, say); anything else stops the run.
    for (const ui::Alert& alert : ui::alerts()) {
        if (alert.kind != kNotice) return fail("the plug-in said: " + alert.text + "; nothing written");
        std::printf("Notice: %s\n", alert.text.c_str());
    }
    bool committed = false;
    for (const edits::Edit& e : edits::all()) committed = committed || e.state == edits::State::Committed;
    std::printf("Result: %d (%s)\n", result, committed ? "edit committed" : "nothing changed");
    std::printf("Chords after:\n");
    printChords(*sheet, 1, sheet->staves(), 1, sheet->measures());
    std::printf("Labels:\n");
    bool labelled = false;
    for (int staff = 1; staff <= sheet->staves(); ++staff)
        for (int m = 1; m <= sheet->measures(); ++m)
            for (const std::u16string& t : score::texts(static_cast<int16_t>(staff), static_cast<int16_t>(m))) {
                std::printf("  %-10s m%-3d \"%s\"\n", sheet->partName(staff).substr(0, 10).c_str(), m,
                            mx::plainText(t).c_str());
                labelled = true;
            }
    if (!labelled) std::printf("  none\n");


    if (!sheet->write(out, &error)) return fail(error);
    std::printf("Wrote %s\n", out.c_str());
    return 0;
}

bool parseApplyOption(int argc, char** argv, int* i, ApplyOptions* a, std::string* error) {
    const std::string arg = argv[*i];
    const bool takesValue = arg == "--measures" || arg == "--staves" || arg == "-o";
    if (takesValue && *i + 1 >= argc) {
        *error = arg + " needs a value";
        return false;
    }
    if (arg == "--measures" || arg == "--staves") {
        int first = 0, last = 0;
        if (!range(argv[*i + 1], &first, &last)) {
            *error = arg + " wants FIRST-LAST (from 1), not " + argv[*i + 1];
            return false;
        }
        (arg == "--measures" ? a->firstMeasure : a->firstStaff) = first;
        (arg == "--measures" ? a->lastMeasure : a->lastStaff) = last;
        ++*i;
        return true;
    }
    if (arg == "-o") {
        a->output = argv[++*i];
        return true;
    }
    if (arg == "--score" || arg == "--selection" || arg == "--whole-document" || arg == "--cancel") return false;
    if (parseRunOption(argc, argv, i, &a->run, error)) {
        if (arg == "--capo" && !wholeNumber(a->run.capo, 1, 63))
            *error = "--capo wants a fret from 1 to 63, not " + a->run.capo;
        if (arg == "--distance" && !decimal(a->run.distance))
            *error = "--distance wants a number, not " + a->run.distance;
        return error->empty();
    }
    if (!error->empty()) return false;
    if (arg.size() > 1 && arg[0] == '-') return false;
    if (!a->score.empty()) {
        *error = "one score at a time (" + a->score + ", " + arg + ")";
        return false;
    }
    a->score = arg;
    return true;
}

}  // namespace zemlo
