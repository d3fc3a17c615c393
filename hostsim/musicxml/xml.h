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
// The direction is a label candidate when it holds nothing but one <words>.
xmlNodePtr labelWords(xmlNodePtr direction);

} // namespace musicxml
} // namespace hostsim

#endif
