// zemlo-host suggest: which capo turns a score's chords into open shapes.
#include "apply.h"

#include "leadsheet.h"
#include "shapes.h"

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace zemlo {

namespace mx = hostsim::musicxml;

int suggestCommand(int argc, char** argv) {
    if (argc != 3 || argv[2][0] == '-') {
        std::fprintf(stderr, "usage: zemlo-host suggest SCORE.musicxml|.mxl\n");
        return 2;
    }
    std::string error;
    const std::unique_ptr<mx::LeadSheet> sheet = mx::LeadSheet::read(argv[2], &error);
    if (!sheet) {
        std::fprintf(stderr, "zemlo-host: %s\n",
                     error.empty() ? "cannot read the score" : error.c_str());
        return 1;
    }
    const std::vector<mx::ConcertChord> chords = sheet->concertChords();
    if (chords.empty()) {
        std::fprintf(stderr, "zemlo-host: %s holds no chord symbols (<harmony>)\n", argv[2]);
        return 1;
    }
    const std::vector<mx::CapoChoice> ranked = mx::rankCapos(chords);
    std::printf("Score \"%s\": %zu chords, concert key %s\n", sheet->title().c_str(), chords.size(),
                mx::keyName(chords.front().key).c_str());
    std::printf("  capo  shapes      open shapes\n");
    for (const mx::CapoChoice& c : ranked)
        std::printf("  %-4s  %-10s  %d of %zu\n", c.fret ? std::to_string(c.fret).c_str() : "none",
                    mx::keyName(c.shapes).c_str(), c.open, chords.size());

    // The chords that stay hard with the best choice, once each, with their measures.
    const mx::CapoChoice& best = ranked.front();
    std::map<std::string, std::vector<int>> hard;
    for (size_t i : best.hard) {
        std::vector<int>& measures = hard[mx::shapeName(chords[i], best.fret)];
        if (measures.empty() || measures.back() != chords[i].measure)
            measures.push_back(chords[i].measure);
    }
    std::printf("Still hard with %s:",
                best.fret ? ("capo " + std::to_string(best.fret)).c_str() : "no capo");
    if (hard.empty()) std::printf(" none");
    for (const auto& [name, measures] : hard) {
        std::string at;
        for (int m : measures)
            at += (at.empty() ? "m" : ", m") + std::to_string(m);
        std::printf(" %s (%s)", name.c_str(), at.c_str());
    }
    std::printf("\n");
    return 0;
}

} // namespace zemlo
