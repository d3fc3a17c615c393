// libxml2 helpers shared by the reader and the writer.
#include "xml.h"

#include <cmath>
#include <cstdlib>

namespace hostsim {
namespace musicxml {

bool is(xmlNodePtr n, const char* name) {
    return n && n->type == XML_ELEMENT_NODE && xmlStrcmp(n->name, X(name)) == 0;
}

xmlNodePtr child(xmlNodePtr n, const char* name) {
    for (xmlNodePtr c = n ? n->children : nullptr; c; c = c->next)
        if (is(c, name)) return c;
    return nullptr;
}

std::vector<xmlNodePtr> children(xmlNodePtr n, const char* name) {
    std::vector<xmlNodePtr> out;
    for (xmlNodePtr c = n ? n->children : nullptr; c; c = c->next)
        if (c->type == XML_ELEMENT_NODE && (!name || is(c, name))) out.push_back(c);
    return out;
}

namespace {

std::string trimmed(const char* t) {
    const std::string s = t ? t : "";
    const size_t a = s.find_first_not_of(" \t\r\n");
    const size_t b = s.find_last_not_of(" \t\r\n");
    return a == std::string::npos ? std::string() : s.substr(a, b - a + 1);
}

} // namespace

std::string text(xmlNodePtr n) {
    if (!n) return {};
    // Most elements read hold one text and nothing else: read it in place.
    xmlNodePtr only = n->children;
    if (only && !only->next && only->type == XML_TEXT_NODE)
        return trimmed(reinterpret_cast<const char*>(only->content));
    xmlChar* t = xmlNodeGetContent(n);
    std::string s = trimmed(reinterpret_cast<const char*>(t));
    xmlFree(t);
    return s;
}

std::string attr(xmlNodePtr n, const char* name) {
    xmlChar* v = xmlGetProp(n, X(name));
    std::string s = v ? reinterpret_cast<const char*>(v) : "";
    xmlFree(v);
    return s;
}

bool number(const std::string& s, double* v) {
    if (s.empty()) return false;
    char* end = nullptr;
    *v = std::strtod(s.c_str(), &end);
    return *end == 0 && std::isfinite(*v);
}

long integer(xmlNodePtr n, long fallback) {
    double v = 0;
    return number(text(n), &v) && std::fabs(v) < 1e9 ? std::lround(v) : fallback;
}

void drop(xmlNodePtr n) {
    xmlUnlinkNode(n);
    xmlFreeNode(n);
}

namespace {

bool blank(xmlNodePtr n) {
    return n && n->type == XML_TEXT_NODE && xmlIsBlankNode(n);
}

xmlNodePtr spaceNode(xmlNodePtr near, const std::string& space) {
    return xmlNewDocText(near->doc, X(space.c_str()));
}

// Each element child of `n` on a line of its own, `space` deep, and the
// end tag on a line `close` deep.
void layOut(xmlNodePtr n, const std::string& space, const std::string& close,
            const std::string& unit) {
    if (space.find('\n') == std::string::npos) return;
    bool any = false;
    for (xmlNodePtr c = n->children; c; c = c->next) {
        if (c->type != XML_ELEMENT_NODE) continue;
        xmlAddPrevSibling(c, spaceNode(n, space));
        layOut(c, space + unit, space, unit);
        any = true;
    }
    if (any) xmlAddChild(n, spaceNode(n, close));
}

} // namespace

std::string spaceBefore(xmlNodePtr n) {
    if (!n || !blank(n->prev)) return "";
    return reinterpret_cast<const char*>(n->prev->content);
}

void insertLike(xmlNodePtr parent, xmlNodePtr n, xmlNodePtr before, const std::string& space,
                const std::string& unit) {
    const auto elements = children(parent);
    // Like the element it goes before, else like the last; `space` only
    // where there is no sibling to follow.
    const std::string sibling =
        before ? spaceBefore(before) : elements.empty() ? space : spaceBefore(elements.back());
    const bool lines = sibling.find('\n') != std::string::npos;
    if (before) {
        xmlAddPrevSibling(before, n);
        if (lines) xmlAddPrevSibling(before, spaceNode(parent, sibling));
    } else if (blank(parent->last)) {
        xmlAddPrevSibling(parent->last, n);
        if (lines) xmlAddPrevSibling(n, spaceNode(parent, sibling));
    } else {
        if (lines) xmlAddChild(parent, spaceNode(parent, sibling));
        xmlAddChild(parent, n);
        if (lines && elements.empty()) {
            // The parent had no element children: its end tag one level up.
            std::string close = sibling;
            if (close.size() > unit.size() &&
                close.compare(close.size() - unit.size(), unit.size(), unit) == 0)
                close.resize(close.size() - unit.size());
            xmlAddChild(parent, spaceNode(parent, close));
        }
    }
    if (lines) layOut(n, sibling + unit, sibling, unit);
}

void layOutChildren(xmlNodePtr n, const std::string& space, const std::string& unit) {
    layOut(n, space + unit, space, unit);
}

void dropLike(xmlNodePtr n) {
    if (blank(n->prev)) drop(n->prev);
    drop(n);
}

std::string dumpNode(xmlDocPtr doc, xmlNodePtr n) {
    xmlBufferPtr buf = xmlBufferCreate();
    xmlNodeDump(buf, doc, n, 0, 0);
    std::string s(reinterpret_cast<const char*>(xmlBufferContent(buf)),
                  static_cast<size_t>(xmlBufferLength(buf)));
    xmlBufferFree(buf);
    return s;
}

xmlNodePtr labelWords(xmlNodePtr direction) {
    const auto types = children(direction, "direction-type");
    if (types.size() != 1) return nullptr;
    const auto inner = children(types[0]);
    return inner.size() == 1 && is(inner[0], "words") ? inner[0] : nullptr;
}

} // namespace musicxml
} // namespace hostsim
