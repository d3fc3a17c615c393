// Writing a capo chord out of its source <harmony> in one pass: a small
// serialiser that writes the source's nodes and puts the capo chord's own
// values in where they differ. Nothing is copied or allocated per node.
#include "capotext.h"

#include "xml.h"

#include <cstring>

namespace hostsim {
namespace musicxml {
namespace {

void escape(const xmlChar* s, bool attribute, std::string* out) {
    for (; s && *s; ++s) {
        switch (*s) {
        case '&': out->append("&amp;"); break;
        case '<': out->append("&lt;"); break;
        case '>': out->append("&gt;"); break;
        case '\r': out->append("&#13;"); break;
        case '"': out->append(attribute ? "&quot;" : "\""); break;
        case '\n': out->append(attribute ? "&#10;" : "\n"); break;
        case '\t': out->append(attribute ? "&#9;" : "\t"); break;
        default: out->push_back(static_cast<char>(*s));
        }
    }
}

void appendName(xmlNsPtr ns, const xmlChar* name, std::string* out) {
    if (ns && ns->prefix) {
        out->append(reinterpret_cast<const char*>(ns->prefix));
        out->push_back(':');
    }
    out->append(reinterpret_cast<const char*>(name));
}

void appendAttribute(const char* name, const std::string& value, std::string* out) {
    out->append(" ").append(name).append("=\"");
    escape(X(value.c_str()), true, out);
    out->push_back('"');
}

// The start tag, without the attribute `without` (when given), and with
// `extra` (already written attributes) at its end; open: no '>' yet.
void appendStart(xmlNodePtr n, const char* without, std::string* out) {
    out->push_back('<');
    appendName(n->ns, n->name, out);
    for (xmlNsPtr ns = n->nsDef; ns; ns = ns->next) {
        out->append(" xmlns");
        if (ns->prefix) out->append(":").append(reinterpret_cast<const char*>(ns->prefix));
        out->append("=\"");
        escape(ns->href, true, out);
        out->push_back('"');
    }
    for (xmlAttrPtr a = n->properties; a; a = a->next) {
        if (without && !a->ns && xmlStrcmp(a->name, X(without)) == 0) continue;
        out->push_back(' ');
        appendName(a->ns, a->name, out);
        out->append("=\"");
        for (xmlNodePtr v = a->children; v; v = v->next)
            escape(v->content, true, out);
        out->push_back('"');
    }
}

void appendEnd(xmlNodePtr n, std::string* out) {
    out->append("</");
    appendName(n->ns, n->name, out);
    out->push_back('>');
}

void appendChildren(xmlNodePtr n, std::string* out) {
    for (xmlNodePtr c = n->children; c; c = c->next)
        appendNode(c, out);
}

bool blank(xmlNodePtr n) {
    return n && n->type == XML_TEXT_NODE && xmlIsBlankNode(n);
}

void appendSimple(const char* name, const std::string& value, std::string* out) {
    out->append("<").append(name).append(">").append(value).append("</").append(name).append(">");
}

// A root or bass with the step and alteration of `p`.
void appendPitch(xmlNodePtr e, const char* stepName, const char* alterName, Pitch p,
                 std::string* out) {
    const bool hasAlter = child(e, alterName) != nullptr;
    appendStart(e, nullptr, out);
    out->push_back('>');
    for (xmlNodePtr c = e->children; c; c = c->next) {
        if (p.alter == 0 && (is(c, alterName) || (blank(c) && is(c->next, alterName)))) continue;
        if (is(c, stepName)) {
            appendStart(c, "text", out); // a display text would still show the concert note
            out->append(">").push_back("CDEFGAB"[p.step]);
            appendEnd(c, out);
            if (p.alter != 0 && !hasAlter) {
                if (blank(c->prev)) out->append(reinterpret_cast<const char*>(c->prev->content));
                appendSimple(alterName, std::to_string(p.alter), out);
            }
        } else if (is(c, alterName)) {
            appendStart(c, nullptr, out);
            out->append(">").append(std::to_string(p.alter));
            appendEnd(c, out);
        } else {
            appendNode(c, out);
        }
    }
    appendEnd(e, out);
}

// The diagram of an open shape, frets counted from the capo as the player
// counts them; strings not played get no note. `space` is the whitespace
// before it, its inside one `unit` deeper.
void appendFrame(const OpenShape& shape, const std::string& space, const std::string& unit,
                 std::string* out) {
    const bool lines = space.find('\n') != std::string::npos;
    const std::string in = lines ? space + unit : "", in2 = lines ? in + unit : "";
    out->append("<frame unplayed=\"x\">").append(in);
    appendSimple("frame-strings", "6", out);
    out->append(in);
    appendSimple("frame-frets", "4", out);
    for (int i = 0; i < 6; ++i) {
        if (shape.frets[i] < 0) continue;
        out->append(in).append("<frame-note>").append(in2);
        appendSimple("string", std::to_string(6 - i), out);
        out->append(in2);
        appendSimple("fret", std::to_string(shape.frets[i]), out);
        out->append(in).append("</frame-note>");
    }
    out->append(lines ? space : "").append("</frame>");
}

// A <frame> goes after the chord and before these.
const char* const kAfterFrame[] = {"offset", "footnote", "level", "staff"};

bool afterFrame(xmlNodePtr n) {
    for (const char* name : kAfterFrame)
        if (is(n, name)) return true;
    return false;
}

} // namespace

void appendNode(xmlNodePtr n, std::string* out) {
    switch (n->type) {
    case XML_ELEMENT_NODE:
        appendStart(n, nullptr, out);
        if (!n->children) {
            out->append("/>");
            return;
        }
        out->push_back('>');
        appendChildren(n, out);
        appendEnd(n, out);
        return;
    case XML_TEXT_NODE: escape(n->content, false, out); return;
    case XML_CDATA_SECTION_NODE:
        out->append("<![CDATA[").append(reinterpret_cast<const char*>(n->content)).append("]]>");
        return;
    case XML_COMMENT_NODE:
        out->append("<!--").append(reinterpret_cast<const char*>(n->content)).append("-->");
        return;
    case XML_PI_NODE:
        out->append("<?").append(reinterpret_cast<const char*>(n->name));
        if (n->content) out->append(" ").append(reinterpret_cast<const char*>(n->content));
        out->append("?>");
        return;
    case XML_ENTITY_REF_NODE:
        out->append("&").append(reinterpret_cast<const char*>(n->name)).append(";");
        return;
    default: return;
    }
}

void appendCapoChord(xmlNodePtr source, const CapoText& c, std::string* out) {
    // The start tag: type and default-y in place where the source has them, else last.
    out->push_back('<');
    appendName(source->ns, source->name, out);
    bool typed = false, placed = false;
    for (xmlAttrPtr a = source->properties; a; a = a->next) {
        const bool type = !a->ns && xmlStrcmp(a->name, X("type")) == 0;
        const bool y = !a->ns && xmlStrcmp(a->name, X("default-y")) == 0;
        if (type || y) {
            appendAttribute(type ? "type" : "default-y", type ? "alternate" : c.defaultY, out);
            (type ? typed : placed) = true;
            continue;
        }
        out->push_back(' ');
        appendName(a->ns, a->name, out);
        out->append("=\"");
        for (xmlNodePtr v = a->children; v; v = v->next)
            escape(v->content, true, out);
        out->push_back('"');
    }
    if (!typed) appendAttribute("type", "alternate", out);
    if (!placed) appendAttribute("default-y", c.defaultY, out);
    out->push_back('>');

    bool framed = c.frame == nullptr;
    xmlNodePtr lastElement = nullptr;
    for (xmlNodePtr n = source->children; n; n = n->next)
        if (n->type == XML_ELEMENT_NODE) lastElement = n;
    for (xmlNodePtr n = source->children; n; n = n->next) {
        // The source's diagram goes, with the whitespace before it; the
        // shape's takes its place.
        if (blank(n) && is(n->next, "frame") && !c.frame) continue;
        if (is(n, "frame")) {
            if (c.frame) {
                appendFrame(*c.frame, blank(n->prev) ? reinterpret_cast<const char*>(n->prev->content) : "",
                            c.unit, out);
                framed = true;
            }
            continue;
        }
        if (!framed && n->type == XML_ELEMENT_NODE && afterFrame(n) && !child(source, "frame")) {
            const std::string space = blank(n->prev) ? reinterpret_cast<const char*>(n->prev->content) : "";
            appendFrame(*c.frame, space, c.unit, out);
            out->append(space);
            framed = true;
        }
        if (is(n, "root"))
            appendPitch(n, "root-step", "root-alter", c.root, out);
        else if (is(n, "bass") && c.hasBass)
            appendPitch(n, "bass-step", "bass-alter", c.bass, out);
        else
            appendNode(n, out);
        if (!framed && n == lastElement && !child(source, "frame")) {
            // Last of all: after the last element, like it.
            const std::string space = blank(n->prev) ? reinterpret_cast<const char*>(n->prev->content) : "";
            out->append(space);
            appendFrame(*c.frame, space, c.unit, out);
            framed = true;
        }
    }
    appendEnd(source, out);
}

} // namespace musicxml
} // namespace hostsim
