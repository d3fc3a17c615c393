// zemlo-host apply, top-down: the options, then the run on the lead sheet
// (read, build, the dialog answered, the command chosen once, what the host
// saw), then the report and the written file.
#include "apply.h"

#include "hostsim/boundary.h"
#include "hostsim/edits.h"
#include "hostsim/plugin.h"
#include "hostsim/score.h"
#include "hostsim/ui.h"
#include "leadsheet.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <unistd.h>

namespace zemlo {
namespace {

namespace driver = hostsim::driver;
namespace edits = hostsim::edits;
namespace mx = hostsim::musicxml;
namespace score = hostsim::score;
namespace ui = hostsim::ui;

// ---- Options ----------------------------------------------------------------

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

// FIRST-LAST or N, measure numbers as the score prints them.
bool numberRange(const std::string& text, std::string* first, std::string* last) {
    const size_t dash = text.find('-');
    *first = text.substr(0, dash);
    *last = dash == std::string::npos ? *first : text.substr(dash + 1);
    return !first->empty() && !last->empty() && last->find('-') == std::string::npos;
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

// The dialog's answers. False when `arg` is none of them.
bool parseAnswer(const std::string& arg, const char* value, driver::Answers* o,
                 std::string* error) {
    if (arg == "--unit") {
        if (!driver::isUnit(value))
            *error = std::string("unknown unit ") + value +
                     " (evpus, inches, centimeters, points, picas, spaces)";
        o->unit = value;
    } else if (arg == "--capo") {
        o->capo = value;
        if (!wholeNumber(o->capo, 1, 63))
            *error = "--capo wants a fret from 1 to 63, not " + o->capo;
    } else if (arg == "--distance") {
        o->distance = value;
        if (!decimal(o->distance)) *error = "--distance wants a number, not " + o->distance;
    } else if (arg == "--label") {
        o->label = value;
        o->setLabel = true;
    } else if (arg == "--no-label")
        o->noLabel = true;
    else if (arg == "--chord-flag")
        o->chordFlag = true;
    else if (arg == "--remove")
        o->remove = true;
    else if (arg == "--whole-document")
        o->wholeDocument = true;
    else
        return false;
    return true;
}

// ---- Printing ---------------------------------------------------------------

struct View {
    const mx::LeadSheet& sheet;
    int16_t staves() const { return static_cast<int16_t>(sheet.staves()); }
    int16_t measures() const { return static_cast<int16_t>(sheet.measures()); }
    std::string part(int staff) const { return sheet.staffName(staff).substr(0, 10); }
    // A measure's number as printed; its position where the file gives none.
    std::string number(int m) const {
        const std::string n = sheet.measureNumber(m);
        return n.empty() ? std::to_string(m) : n;
    }
};

// The staves and measures the command works on, by position from 1.
struct Span {
    int16_t firstStaff = 1, lastStaff = 1, firstMeasure = 1, lastMeasure = 1;
};

// Each staff-measure's chords, each capo chord as the shape the player fingers.
void printChords(const View& s) {
    for (int16_t staff = 1; staff <= s.staves(); ++staff) {
        for (int16_t m = 1; m <= s.measures(); ++m) {
            const auto chords = score::chords(staff, m);
            if (chords.empty()) continue;
            std::string concert, capo;
            int fret = 0;
            for (const score::ChordRecord& c : chords) {
                std::string& line = c.isCapo() ? capo : concert;
                line += (line.empty() ? "" : "  ") + mx::chordName(c, s.sheet.key(staff, m));
                if (c.isCapo()) fret = c.fret();
            }
            std::printf("  %-10s m%-3s ", s.part(staff).c_str(), s.number(m).c_str());
            if (fret)
                std::printf("%-24s | capo %d: %s\n", concert.c_str(), fret, capo.c_str());
            else
                std::printf("%s\n", concert.c_str());
        }
    }
}

void printLabels(const View& s) {
    bool labelled = false;
    for (int16_t staff = 1; staff <= s.staves(); ++staff)
        for (int16_t m = 1; m <= s.measures(); ++m)
            for (const std::u16string& t : score::texts(staff, m)) {
                std::printf("  %-10s m%-3s \"%s\"\n", s.part(staff).c_str(), s.number(m).c_str(),
                            mx::plainText(t).c_str());
                labelled = true;
            }
    if (!labelled) std::printf("  none\n");
}

// A chord record's bytes in hex, a group per field of the host's layout.
std::string hexFields(const score::ChordRecord& c) {
    static const size_t kFieldEnds[] = {2, 4, 8, 10, 16, 18, 20, 24, 30};
    const auto* bytes = reinterpret_cast<const uint8_t*>(&c);
    std::string out;
    size_t at = 0;
    for (size_t end : kFieldEnds) {
        out += out.empty() ? "" : " ";
        for (; at < end; ++at) {
            char h[3];
            std::snprintf(h, sizeof h, "%02x", bytes[at]);
            out += h;
        }
    }
    return out;
}

// Every chord record and measure text, for those who debug the host or the plug-in.
void printRecords(const View& s) {
    for (int16_t staff = 1; staff <= s.staves(); ++staff)
        for (int16_t m = 1; m <= s.measures(); ++m) {
            const auto chords = score::chords(staff, m);
            for (size_t i = 0; i < chords.size(); ++i) {
                const score::ChordRecord& c = chords[i];
                const std::string name = mx::chordName(c, s.sheet.key(staff, m));
                std::printf("  chord %d/%s/%zu: %s%s (onset %d, y %d%s)  %s\n", staff,
                            s.number(m).c_str(), i,
                            c.isCapo() ? ("capo " + std::to_string(c.fret()) + " ").c_str() : "",
                            name.c_str(), c.key3, c.vertical, c.flags & 0x8000 ? ", flagged" : "",
                            hexFields(c).c_str());
            }
            const auto places = score::measureTexts(staff, m);
            const auto texts = score::texts(staff, m);
            for (size_t i = 0; i < places.size() && i < texts.size(); ++i)
                std::printf("  measure text %d/%s/%zu: block %u at x %d, y %d: \"%s\"\n", staff,
                            s.number(m).c_str(), i, places[i].blockNumber, places[i].horizontal,
                            places[i].vertical, ui::utf8(texts[i]).c_str());
        }
}

// The host's progress display as a bar on the terminal (observed only when
// there is one), redrawn when its percentage moves.
void drawProgress(const ui::Progress& p) {
    static size_t shown = SIZE_MAX;
    const size_t done = p.calls.size();
    const size_t steps = p.steps > 0 ? static_cast<size_t>(p.steps) : 1;
    const size_t percent = std::min(done, steps) * 100 / steps;
    if (percent == shown && !p.ended) return;
    shown = p.ended ? SIZE_MAX : percent;
    const size_t width = 30, filled = std::min(width, done * width / steps);
    std::fprintf(stderr, "\r  [%s%s] %zu/%zu", std::string(filled, '#').c_str(),
                 std::string(width - filled, '.').c_str(), std::min(done, steps), steps);
    if (p.ended) std::fprintf(stderr, p.cancelled ? " cancelled\n" : "\n");
    std::fflush(stderr);
}

int fail(const std::string& message) {
    std::fprintf(stderr, "zemlo-host: %s\n", message.c_str());
    return 1;
}

void warn(const std::string& message) {
    std::fprintf(stderr, "zemlo-host: warning: %s\n", message.c_str());
}

std::string fileName(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string stem(const std::string& path) {
    const std::string name = fileName(path);
    const size_t dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

std::string rangeText(int first, int last) {
    return std::to_string(first) + "-" + std::to_string(last);
}

// "a, b, c", the first eight of a long list followed by how many more.
std::string listed(const std::vector<std::string>& items) {
    std::string out;
    for (size_t i = 0; i < items.size() && i < 8; ++i)
        out += (i ? ", " : "") + items[i];
    if (items.size() > 8) out += " and " + std::to_string(items.size() - 8) + " more";
    return out;
}

// ---- The run ----------------------------------------------------------------

// The position of the one measure printed `number`; 0 after saying why in
// *error when no measure or several bear it.
int16_t positionOf(const View& s, const std::string& number, std::string* error) {
    std::vector<std::string> at;
    int16_t position = 0;
    for (int16_t m = 1; m <= s.measures(); ++m)
        if (s.number(m) == number) {
            at.push_back(std::to_string(m));
            position = m;
        }
    if (at.empty())
        *error = "no measure is numbered " + number + " (the first is numbered " + s.number(1) +
                 ", the last " + s.number(s.measures()) + ")";
    else if (at.size() > 1)
        *error = std::to_string(at.size()) + " measures are numbered " + number + " (positions " +
                 listed(at) + "); select them by position with --positions FIRST-LAST";
    return error->empty() ? position : 0;
}

// The region the options select. Empty, or why they select none.
std::string selectSpan(const View& s, const ApplyOptions& a, Span* span) {
    *span = {1, s.staves(), 1, s.measures()};
    if (a.firstStaff && a.lastStaff > s.staves())
        return "--staves " + rangeText(a.firstStaff, a.lastStaff) + ": the score has staves 1-" +
               std::to_string(s.staves());
    if (a.firstStaff) {
        span->firstStaff = static_cast<int16_t>(a.firstStaff);
        span->lastStaff = static_cast<int16_t>(a.lastStaff);
    }
    if (a.firstPosition && a.lastPosition > s.measures())
        return "--positions " + rangeText(a.firstPosition, a.lastPosition) + ": the score has " +
               std::to_string(s.measures()) + " measures";
    if (a.firstPosition) {
        span->firstMeasure = static_cast<int16_t>(a.firstPosition);
        span->lastMeasure = static_cast<int16_t>(a.lastPosition);
    }
    if (a.firstNumber.empty()) return "";
    std::string why;
    span->firstMeasure = positionOf(s, a.firstNumber, &why);
    if (why.empty()) span->lastMeasure = positionOf(s, a.lastNumber, &why);
    if (why.empty() && span->lastMeasure < span->firstMeasure)
        why = "measure " + a.lastNumber + " comes before measure " + a.firstNumber;
    const std::string given =
        a.firstNumber == a.lastNumber ? a.firstNumber : a.firstNumber + "-" + a.lastNumber;
    return why.empty() ? "" : "--measures " + given + ": " + why;
}

// Reads the lead sheet and the region the options select in it. Null after
// saying why.
std::unique_ptr<mx::LeadSheet> readScore(const std::string& path, const ApplyOptions& a,
                                         Span* span) {
    std::string error;
    std::unique_ptr<mx::LeadSheet> sheet = mx::LeadSheet::read(path, &error);
    if (!sheet)
        error = error.empty() ? "cannot read " + path : error;
    else if (sheet->chordCount() == 0 && sheet->leftAlone().empty())
        error = path + " holds no chord symbols (<harmony>)";
    else
        error = selectSpan(View{*sheet}, a, span);
    if (!error.empty()) {
        fail(error);
        return nullptr;
    }
    return sheet;
}

// --capo auto: the fret from 1 to 7 that turns the most chords into open
// shapes, explained in one line.
int chooseCapo(const mx::LeadSheet& sheet) {
    const std::vector<mx::CapoChoice> ranked = mx::rankCapos(sheet.concertChords());
    const mx::CapoChoice& best = mx::bestCapo(ranked);
    std::printf("Capo auto: fret %d, %s shapes: %d of %zu chords in open shapes", best.fret,
                mx::keyName(best.shapes).c_str(), best.open, sheet.chordCount());
    if (ranked.front().fret == 0 && ranked.front().open > best.open)
        std::printf(" (no capo scores higher: %d)", ranked.front().open);
    std::printf("\n");
    return best.fret;
}

// The user chooses the menu item once, with the selection or with none.
int16_t chooseCommand(driver::InvokeFn invoke, const Span& span, bool byPosition,
                      const driver::Answers& answers, const View& s, int* fret) {
    score::Region whole = score::region(1, 1, s.staves(), s.measures());
    score::Region selection =
        score::region(span.firstStaff, span.firstMeasure, span.lastStaff, span.lastMeasure);
    std::string shown, confirmed, fretText;
    driver::answerWith(answers, &shown, &confirmed, &fretText);
    if (isatty(STDERR_FILENO)) ui::setProgressObserver(drawProgress);
    // Printed numbers may repeat: a selection by position says so.
    std::string measures = s.number(span.firstMeasure) + "-" + s.number(span.lastMeasure);
    if (byPosition)
        measures += " (positions " + rangeText(span.firstMeasure, span.lastMeasure) + ")";
    if (answers.wholeDocument)
        std::printf("Capo chords: nothing selected (the whole document, when asked)\n");
    else
        std::printf("Capo chords: staves %d-%d, measures %s\n", span.firstStaff, span.lastStaff,
                    measures.c_str());
    std::fflush(stdout);
    const int16_t result = invoke(nullptr, 0, answers.wholeDocument ? nullptr : &selection, &whole);
    ui::setProgressObserver(nullptr);
    std::printf("Dialog confirmed: %s\n", confirmed.c_str());
    *fret = std::atoi(fretText.c_str());
    return result;
}

// What the host holds against the plug-in, and alerts that stop the run. Empty: the run went
// through.
std::string hostComplaints(bool wholeDocument) {
    std::string error;
    for (const ui::Error& e : ui::errors())
        error += (error.empty() ? "" : "; ") + e.text;
    for (const std::string& e : edits::errors())
        error += (error.empty() ? "" : "; ") + e;
    if (!error.empty()) return "the host saw faults of the plug-in: " + error + "; nothing written";
    // A notice tells what happened (nothing to change, say); the question
    // comes when nothing is selected; anything else stops the run.
    for (const ui::Alert& alert : ui::alerts()) {
        if (alert.kind == hostsim::alert::kNotice)
            std::printf("Notice: %s\n", alert.text.c_str());
        else if (alert.kind == hostsim::alert::kQuestion && wholeDocument)
            std::printf("Question: %s (OK)\n", alert.text.c_str());
        else
            return "the plug-in said: " + alert.text + "; nothing written";
    }
    return "";
}

// The command adds at most this many capo chords to one staff-measure in a run.
constexpr size_t kMostNewCapoChords = 16;

std::string chordsText(size_t n) {
    return std::to_string(n) + (n == 1 ? " chord" : " chords");
}

// What a writing run at `fret` left without a capo chord or at another
// fret, which the command does not say, read from the records after it: an
// ordinary chord has a capo chord when one with its three keys is in its
// staff-measure.
void warnLeftOver(const View& s, const Span& span, int fret) {
    const bool named = span.lastStaff > span.firstStaff;
    std::vector<std::string> crowded, afterCapo, unreached; // staff-measures
    size_t inCrowded = 0, inAfterCapo = 0, inUnreached = 0;
    for (int16_t staff = span.firstStaff; staff <= span.lastStaff; ++staff)
        for (int16_t m = span.firstMeasure; m <= span.lastMeasure; ++m) {
            const auto chords = score::chords(staff, m);
            size_t ordinary = 0, bare = 0;
            const size_t stale = static_cast<size_t>(std::count_if(
                chords.begin(), chords.end(), [&](const auto& c) { return c.isCapo() && c.fret() != fret; }));
            if (stale) {
                unreached.push_back((named ? s.sheet.staffName(staff) + " m" : "m") + s.number(m));
                inUnreached += stale;
            }
            for (const score::ChordRecord& c : chords) {
                if (c.isCapo()) continue;
                ++ordinary;
                bare += std::none_of(chords.begin(), chords.end(), [&](const auto& k) {
                    return k.isCapo() && k.key1 == c.key1 && k.key2 == c.key2 && k.key3 == c.key3;
                });
            }
            if (!bare) continue;
            const bool full = ordinary > kMostNewCapoChords;
            (full ? crowded : afterCapo)
                .push_back((named ? s.sheet.staffName(staff) + " m" : "m") + s.number(m));
            (full ? inCrowded : inAfterCapo) += bare;
        }
    const std::string most = std::to_string(kMostNewCapoChords);
    if (inCrowded)
        warn(chordsText(inCrowded) + " left without a capo chord in " + listed(crowded) +
             ": more than " + most + " chords in a staff-measure, and the command adds at most " +
             most + " capo chords to one");
    if (inAfterCapo)
        warn(chordsText(inAfterCapo) + " left without a capo chord in " + listed(afterCapo) +
             ": the score already had capo chords, and once the command meets one it adds "
             "none, only updates; run --remove first, or select only those measures");
    if (inUnreached)
        warn(std::to_string(inUnreached) + (inUnreached == 1 ? " capo chord" : " capo chords") +
             " in " + listed(unreached) + " still at another fret than " + std::to_string(fret) +
             ": the command ends a staff-measure's walk once it has " + most +
             " capo chords to add, before it reaches them; run it again to update them");
    std::vector<int> alone = s.sheet.leftAlone();
    std::sort(alone.begin(), alone.end());
    alone.erase(std::unique(alone.begin(), alone.end()), alone.end());
    std::vector<std::string> where;
    for (int m : alone)
        where.push_back("m" + s.number(m));
    if (!where.empty())
        warn(std::to_string(s.sheet.leftAlone().size()) +
             " <harmony> without a root (numerals, functions) or N.C. left alone in " +
             listed(where) + ": they get no capo chord");
}

} // namespace

bool parseApplyOption(int argc, char** argv, int* i, ApplyOptions* a, std::string* error) {
    const std::string arg = argv[*i];
    const bool takesValue = arg == "--measures" || arg == "--positions" || arg == "--staves" ||
                            arg == "-o" || arg == "--unit" || arg == "--capo" ||
                            arg == "--distance" || arg == "--label";
    if (takesValue && *i + 1 >= argc) {
        *error = arg + " needs a value";
        return false;
    }
    const char* value = takesValue ? argv[*i + 1] : nullptr;
    if (takesValue) ++*i;
    if (arg == "--positions" || arg == "--staves") {
        int first = 0, last = 0;
        if (!range(value, &first, &last)) *error = arg + " wants FIRST-LAST (from 1), not " + value;
        (arg == "--positions" ? a->firstPosition : a->firstStaff) = first;
        (arg == "--positions" ? a->lastPosition : a->lastStaff) = last;
    } else if (arg == "--measures") {
        if (!numberRange(value, &a->firstNumber, &a->lastNumber))
            *error =
                std::string("--measures wants FIRST-LAST as the score numbers them, not ") + value;
    } else if (arg == "-o") {
        a->output = value;
    } else if (arg == "--records") {
        a->records = true;
    } else if (arg == "--diagrams") {
        a->diagrams = true;
    } else if (arg == "--capo" && std::string(value) == "auto") {
        a->autoCapo = true;
    } else if (!parseAnswer(arg, value, &a->answers, error)) {
        if (takesValue) --*i;
        if (arg.size() > 1 && arg[0] == '-') return false;
        if (!a->score.empty())
            *error = "one score at a time (" + a->score + ", " + arg + ")";
        else
            a->score = arg;
    }
    if (error->empty() && !a->firstNumber.empty() && a->firstPosition)
        *error = "--measures and --positions both select measures; give one";
    return error->empty();
}

namespace {

// The bundled sample: an installed copy's, else the source tree's.
std::string sampleScore() {
    const std::string installed =
        hostsim::besideProgram({"../share/capochords/samples/lantern-road.musicxml"});
    std::error_code ec;
    return std::filesystem::exists(installed, ec) ? installed : ZEMLO_SAMPLE_SCORE;
}

} // namespace

int applyCommand(driver::InvokeFn invoke, const ApplyOptions& a) {
    const std::string path = a.score.empty() ? sampleScore() : a.score;
    const std::string out = a.output.empty() ? stem(path) + ".capo.musicxml" : a.output;
    if (out.size() > 4 && out.compare(out.size() - 4, 4, ".mxl") == 0)
        return fail("-o " + out + ": zemlo-host writes uncompressed MusicXML; name it .musicxml");
    Span span;
    std::unique_ptr<mx::LeadSheet> sheet = readScore(path, a, &span);
    if (!sheet) return 1;
    for (const std::string& w : sheet->warnings())
        warn(w);
    sheet->build();
    driver::Answers answers = a.answers;
    // A capo already in the file is the fret the user starts from.
    if (answers.capo.empty() && sheet->fileCapo()) answers.capo = std::to_string(sheet->fileCapo());
    if (a.autoCapo) answers.capo = std::to_string(chooseCapo(*sheet));

    const View s{*sheet};
    std::printf("Score \"%s\" (%s): %d staves, %d measures, %zu chords\n", sheet->title().c_str(),
                fileName(path).c_str(), sheet->staves(), sheet->measures(), sheet->chordCount());
    if (!sheet->leftAlone().empty())
        std::printf("Left alone: %zu <harmony> without a root (numerals, functions) or N.C.\n",
                    sheet->leftAlone().size());
    std::printf("Chords before:\n");
    printChords(s);
    if (a.records) {
        std::printf("Records before:\n");
        printRecords(s);
    }

    int fret = 0;
    const int16_t result = chooseCommand(invoke, span, a.firstPosition != 0, answers, s, &fret);
    const std::string complaints = hostComplaints(answers.wholeDocument);
    if (!complaints.empty()) return fail(complaints);
    bool committed = false;
    for (const edits::Edit& e : edits::all())
        committed = committed || e.state == edits::State::Committed;
    std::printf("Result: %d (%s)\n", result, committed ? "edit committed" : "nothing changed");
    std::printf("Chords after:\n");
    printChords(s);
    std::printf("Labels:\n");
    printLabels(s);
    if (a.records) {
        std::printf("Records after:\n");
        printRecords(s);
    }

    std::string error;
    if (!sheet->write(out, &error, a.diagrams)) return fail(error);
    std::printf("Wrote %s\n", out.c_str());
    if (!answers.remove)
        warnLeftOver(s, answers.wholeDocument ? Span{1, s.staves(), 1, s.measures()} : span, fret);
    return 0;
}

} // namespace zemlo
