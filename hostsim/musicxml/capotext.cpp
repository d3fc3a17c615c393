// A capo chord out of its source's bytes: a few patches, applied as the
// bytes are copied. Nothing of the source is parsed or copied as a tree.
#include "capotext.h"

#include "bytes.h"

#include <algorithm>
#include <vector>

namespace hostsim {
namespace musicxml {
namespace {

std::string simple(const char* name, const std::string& value) {
    return std::string("<") + name + ">" + value + "</" + name + ">";
}

std::string spaceOf(const std::string& d, const Span& s) {
    return d.substr(s.space, s.from - s.space);
}

// The diagram of an open shape, frets counted from the capo as the player
// counts them; strings not played get no note. `space` is the whitespace
// before it, its inside one `unit` deeper.
std::string frameText(const OpenShape& shape, const std::string& space, const std::string& unit) {
    const bool lines = space.find('\n') != std::string::npos;
    const std::string in = lines ? space + unit : "", in2 = lines ? in + unit : "";
    std::string t = "<frame unplayed=\"x\">" + in + simple("frame-strings", "6") + in +
                    simple("frame-frets", "4");
    for (int i = 0; i < 6; ++i)
        if (shape.frets[i] >= 0)
            t += in + "<frame-note>" + in2 + simple("string", std::to_string(6 - i)) + in2 +
                 simple("fret", std::to_string(shape.frets[i])) + in + "</frame-note>";
    return t + (lines ? space : "") + "</frame>";
}

class Patcher {
  public:
    explicit Patcher(const std::string& d) : d_(d) {}

    void put(size_t from, size_t to, std::string text) {
        patches_.push_back({from, to, std::move(text)});
    }

    // A step and its alteration as `p`: the step without its display text,
    // the alteration's value changed, added after the step, or taken out.
    void pitch(const Span& step, const Span& alter, const char* alterName, Pitch p) {
        if (!step.to) return;
        const Content content = contentOf(d_, step.from, step.to);
        const Attribute display = attributeIn(d_, step.from, "text");
        if (display.found) put(display.whole, display.to + 1, "");
        put(content.from, content.to, std::string(1, "CDEFGAB"[p.step]));
        if (alter.to && p.alter == 0) {
            put(alter.space, alter.to, "");
        } else if (alter.to) {
            const Content value = contentOf(d_, alter.from, alter.to);
            put(value.from, value.to, std::to_string(p.alter));
        } else if (p.alter != 0) {
            put(step.to, step.to, spaceOf(d_, step) + simple(alterName, std::to_string(p.alter)));
        }
    }

    // An attribute of the start tag at `tag` set to `value`.
    void attribute(size_t tag, const char* name, const std::string& value) {
        const Attribute a = attributeIn(d_, tag, name);
        put(a.from, a.to, a.found ? value : std::string(" ") + name + "=\"" + value + "\"");
    }

    void appendTo(size_t from, size_t to, std::string* out) {
        std::stable_sort(patches_.begin(), patches_.end(),
                         [](const Patch& a, const Patch& b) { return a.from < b.from; });
        size_t at = from;
        for (const Patch& p : patches_) {
            if (p.from > at) out->append(d_, at, p.from - at);
            out->append(p.text);
            at = std::max(at, p.to);
        }
        out->append(d_, at, to - at);
    }

  private:
    const std::string& d_;
    std::vector<Patch> patches_;
};

} // namespace

void appendCapoChord(const std::string& data, const Harmony& h, const CapoText& c,
                     std::string* out) {
    const HarmonyBytes& b = h.bytes;
    Patcher p(data);
    p.attribute(h.span.from, "type", "alternate");
    p.attribute(h.span.from, "default-y", c.defaultY);
    p.pitch(b.rootStep, b.rootAlter, "root-alter", c.root);
    if (c.hasBass) p.pitch(b.bassStep, b.bassAlter, "bass-alter", c.bass);
    // The source's diagram goes; the shape's takes its place, or goes
    // before offset, footnote, level and staff, or last.
    if (b.frame.to && c.frame)
        p.put(b.frame.from, b.frame.to, frameText(*c.frame, spaceOf(data, b.frame), c.unit));
    else if (b.frame.to)
        p.put(b.frame.space, b.frame.to, "");
    else if (c.frame && b.frameBefore.to)
        p.put(b.frameBefore.from, b.frameBefore.from,
              frameText(*c.frame, spaceOf(data, b.frameBefore), c.unit) + spaceOf(data, b.frameBefore));
    else if (c.frame && b.last.to)
        p.put(b.last.to, b.last.to,
              spaceOf(data, b.last) + frameText(*c.frame, spaceOf(data, b.last), c.unit));
    p.appendTo(h.span.from, h.span.to, out);
}

} // namespace musicxml
} // namespace hostsim
