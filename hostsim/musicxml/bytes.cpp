// Tags, attributes and declarations in a file's bytes.
#include "bytes.h"

namespace hostsim {
namespace musicxml {

size_t declarationEnd(const std::string& d, size_t at) {
    char quote = 0;
    int subset = 0;
    for (size_t i = at; i < d.size(); ++i) {
        const char c = d[i];
        if (quote)
            quote = c == quote ? 0 : quote;
        else if (c == '"' || c == '\'')
            quote = c;
        else if (c == '[' || c == ']')
            subset += c == '[' ? 1 : -1;
        else if (c == '>' && subset <= 0)
            return i + 1;
    }
    return d.size();
}

size_t doctypeAt(const std::string& d, size_t rootFrom) {
    for (size_t i = 0; i < rootFrom;) {
        const bool comment = d.compare(i, 4, "<!--") == 0, instruction = d.compare(i, 2, "<?") == 0;
        if (d.compare(i, 9, "<!DOCTYPE") == 0) return i;
        if (!comment && !instruction) {
            ++i;
            continue;
        }
        const size_t close = d.find(comment ? "-->" : "?>", i + 2);
        if (close == std::string::npos || close >= rootFrom) break;
        i = close + (comment ? 3 : 2);
    }
    return std::string::npos;
}

Attribute attributeIn(const std::string& d, size_t tag, const std::string& name) {
    size_t i = tag + 1;
    while (i < d.size() && !isSpace(d[i]) && d[i] != '>' && d[i] != '/')
        ++i;
    while (i < d.size()) {
        const size_t whole = i;
        while (i < d.size() && isSpace(d[i]))
            ++i;
        if (i >= d.size() || d[i] == '>' || d[i] == '/') {
            Attribute none;
            none.from = none.to = i;
            return none;
        }
        const size_t nameFrom = i;
        while (i < d.size() && d[i] != '=' && !isSpace(d[i]))
            ++i;
        const bool match = d.compare(nameFrom, i - nameFrom, name) == 0 && i - nameFrom == name.size();
        const size_t quote = d.find_first_of("\"'", i);
        const size_t close = quote == std::string::npos ? quote : d.find(d[quote], quote + 1);
        if (close == std::string::npos) break;
        if (match) return {true, whole, quote + 1, close};
        i = close + 1;
    }
    Attribute none;
    none.from = none.to = d.size();
    return none;
}

Content contentOf(const std::string& d, size_t from, size_t to) {
    const size_t inside = declarationEnd(d, from);
    if (inside >= to) return {to, to};
    return {inside, d.rfind("</", to - 1)};
}

} // namespace musicxml
} // namespace hostsim
