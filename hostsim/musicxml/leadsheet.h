// MusicXML lead sheets in and out of the simulated document.
//
// A partwise score becomes staves (every staff of every part its own) and
// measures; every <harmony> with a root becomes a chord record of its
// staff-measure, in onset order. The file's bytes are kept: writing back
// copies them and splices in only what the simulated host owns (capo chords,
// a <capo> of its own, labels the command wrote or changed), so everything
// else leaves byte for byte as it came.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_LEADSHEET_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_LEADSHEET_H

#include "chords.h"
#include "mapping.h"
#include "shapes.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace hostsim {
namespace musicxml {

// Files larger than this are refused before they are parsed.
constexpr size_t kMaxFileBytes = 16u << 20;

struct Sheet;

class LeadSheet {
  public:
    ~LeadSheet();
    LeadSheet(const LeadSheet&) = delete;
    LeadSheet& operator=(const LeadSheet&) = delete;

    // Reads and checks a file (.mxl: the score inside the compressed file).
    // Null with the reason in *error when it is missing, too large, not
    // well-formed or not a partwise score.
    static std::unique_ptr<LeadSheet> read(const std::string& path, std::string* error);

    // Puts the score into the simulated document (which should be empty):
    // measure records, chord records, label blocks, the fonts labels use.
    void build();
    // Writes the simulated document's chords and labels back as MusicXML 4.0,
    // to a temporary file renamed to `path` once it is complete; once per read. With
    // `diagrams`, every capo chord in an open shape gets that shape's diagram
    // (one whose concert chord has a diagram gets it anyway).
    bool write(const std::string& path, std::string* error, bool diagrams = false);

    std::string title() const;
    int staves() const;
    int measures() const;
    size_t chordCount() const;
    // The staff's name in listings: its part's name, and its number within
    // the part where the part has several staves.
    std::string staffName(int staff) const;
    // A measure's number as the score prints it; positions count from 1.
    std::string measureNumber(int position) const;
    // Key signature in force at a staff-measure.
    Key key(int staff, int measure) const;
    // Every chord of the score as the capo advisor weighs it, in file order.
    std::vector<ConcertChord> concertChords() const;
    // The fret of the first capo chords read back, else of a <capo> in the
    // file's first part that has one; 0: none.
    int fileCapo() const;
    // <harmony> elements kept as they stand, with no record (no root, or no
    // chord): the measure position of each, in file order.
    const std::vector<int>& leftAlone() const;
    // What the reader worked around (an unreadable container, say), one line each.
    const std::vector<std::string>& warnings() const;

  private:
    explicit LeadSheet(std::unique_ptr<Sheet> sheet);
    std::unique_ptr<Sheet> s_;
};

} // namespace musicxml
} // namespace hostsim

#endif
