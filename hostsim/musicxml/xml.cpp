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

std::string text(xmlNodePtr n) {
    if (!n) return {};
    xmlChar* t = xmlNodeGetContent(n);
    std::string s = t ? reinterpret_cast<const char*>(t) : "";
    xmlFree(t);
    const size_t a = s.find_first_not_of(" \t\r\n");
    const size_t b = s.find_last_not_of(" \t\r\n");
    return a == std::string::npos ? std::string() : s.substr(a, b - a + 1);
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

xmlNodePtr labelWords(xmlNodePtr direction) {
    const auto types = children(direction, "direction-type");
    if (types.size() != 1) return nullptr;
    const auto inner = children(types[0]);
    return inner.size() == 1 && is(inner[0], "words") ? inner[0] : nullptr;
}

} // namespace musicxml
} // namespace hostsim
