// The few libxml2 helpers the reader and the writer share.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_XML_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_XML_H

#include <libxml/tree.h>

#include <string>
#include <vector>

namespace hostsim {
namespace musicxml {

inline const xmlChar* X(const char* s) {
    return reinterpret_cast<const xmlChar*>(s);
}

bool is(xmlNodePtr n, const char* name);
xmlNodePtr child(xmlNodePtr n, const char* name);
// Element children, of one name or of any.
std::vector<xmlNodePtr> children(xmlNodePtr n, const char* name = nullptr);
std::string text(xmlNodePtr n); // trimmed
std::string attr(xmlNodePtr n, const char* name);
bool number(const std::string& s, double* v);
// Whole numbers beyond a billion (durations, frets, fifths) are not believed.
long integer(xmlNodePtr n, long fallback);
void drop(xmlNodePtr n);
// The whitespace-only text right before `n`, or "".
std::string spaceBefore(xmlNodePtr n);
// Puts the new element `n` into `parent` before `before` (null: last) on a
// line of its own, with the whitespace its siblings have (else `space`), and
// lays out its own element children one `unit` deeper. A file on one line
// (`space` and siblings without whitespace) gets none.
void insertLike(xmlNodePtr parent, xmlNodePtr n, xmlNodePtr before, const std::string& space,
                const std::string& unit);
// Each element child of the new element `n` on a line of its own one `unit`
// deeper than `space` (the whitespace before `n`), its end tag at `space`.
void layOutChildren(xmlNodePtr n, const std::string& space, const std::string& unit);
// Takes out `n` with the whitespace right before it.
void dropLike(xmlNodePtr n);
// An element as the file would hold it (UTF-8, nothing added around it).
std::string dumpNode(xmlDocPtr doc, xmlNodePtr n);
// The direction is a label candidate when it holds nothing but one <words>.
xmlNodePtr labelWords(xmlNodePtr direction);

} // namespace musicxml
} // namespace hostsim

#endif
