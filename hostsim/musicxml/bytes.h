// Finding tags, attributes and declarations in a file's bytes, for the
// reader's byte ranges and the writer's patches. The bytes are well-formed
// XML (the parser has read them); these only find where things are.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_BYTES_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_BYTES_H

#include <cstddef>
#include <string>

namespace hostsim {
namespace musicxml {

inline bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Right after the '>' that ends the declaration or tag at `at`, quoted
// values and an internal subset passed over.
size_t declarationEnd(const std::string& d, size_t at);

// Where the DOCTYPE declaration starts, before the root at `rootFrom`; npos: none.
size_t doctypeAt(const std::string& d, size_t rootFrom);

// An attribute in the start tag at `tag`: `whole` from the whitespace before
// its name, its value in [from, to). Not found: from = to = where one goes
// (the end of the start tag).
struct Attribute {
    bool found = false;
    size_t whole = 0, from = 0, to = 0;
};
Attribute attributeIn(const std::string& d, size_t tag, const std::string& name);

// The content of the element whose bytes are [from, to): after its start
// tag, up to its end tag. Empty (from == to) for an empty-element tag.
struct Content {
    size_t from = 0, to = 0;
};
Content contentOf(const std::string& d, size_t from, size_t to);

} // namespace musicxml
} // namespace hostsim

#endif
