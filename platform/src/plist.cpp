// Reader for the XML property list form that Apple writes for Info.plist.
// Only the top-level dictionary's string values are kept; other values are
// parsed and skipped. Anything malformed reads as an empty dictionary.
#include "cfobject.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace cfimpl {
namespace {

class PlistParser {
  public:
    explicit PlistParser(const std::string& t) : text_(t) {}

    bool parse(InfoDictionary& out) {
        skipProlog();
        std::string name;
        bool selfClosing;
        if (!openTag(name, selfClosing) || name != "plist" || selfClosing) return false;
        if (!openTag(name, selfClosing) || name != "dict") return false;
        if (!selfClosing && !dictBody(&out)) return false;
        return closeTag("plist");
    }

  private:
    void skipSpace() {
        while (pos_ < text_.size() && isspace(static_cast<unsigned char>(text_[pos_]))) ++pos_;
    }

    bool startsWith(const char* s) const { return text_.compare(pos_, strlen(s), s) == 0; }

    bool skipPast(const char* s) {
        auto at = text_.find(s, pos_);
        if (at == std::string::npos) return false;
        pos_ = at + strlen(s);
        return true;
    }

    void skipProlog() {
        for (;;) {
            skipSpace();
            if (startsWith("<?")) {
                if (!skipPast("?>")) return;
            } else if (startsWith("<!--")) {
                if (!skipPast("-->")) return;
            } else if (startsWith("<!")) {
                if (!skipPast(">")) return;
            } else {
                return;
            }
        }
    }

    void skipComments() {
        for (;;) {
            skipSpace();
            if (!startsWith("<!--") || !skipPast("-->")) return;
        }
    }

    // Reads "<name ...>" or "<name .../>".
    bool openTag(std::string& name, bool& selfClosing) {
        skipComments();
        if (pos_ >= text_.size() || text_[pos_] != '<' || startsWith("</")) return false;
        auto end = text_.find('>', pos_);
        if (end == std::string::npos) return false;
        std::string inner = text_.substr(pos_ + 1, end - pos_ - 1);
        pos_ = end + 1;
        selfClosing = !inner.empty() && inner.back() == '/';
        if (selfClosing) inner.pop_back();
        auto sp = inner.find_first_of(" \t\r\n");
        name = inner.substr(0, sp);
        return !name.empty();
    }

    bool closeTag(const char* name) {
        skipComments();
        std::string want = std::string("</") + name;
        if (!startsWith(want.c_str())) return false;
        pos_ += want.size();
        skipSpace();
        if (pos_ >= text_.size() || text_[pos_] != '>') return false;
        ++pos_;
        return true;
    }

    // Character data up to the closing tag: entities, CDATA sections and
    // comments, as Apple's reader takes them.
    bool textUntilClose(const char* name, std::string& out) {
        out.clear();
        for (;;) {
            if (pos_ >= text_.size()) return false;
            if (startsWith("<![CDATA[")) {
                auto end = text_.find("]]>", pos_ + 9);
                if (end == std::string::npos) return false;
                out.append(text_, pos_ + 9, end - pos_ - 9);
                pos_ = end + 3;
            } else if (startsWith("<!--")) {
                if (!skipPast("-->")) return false;
            } else if (startsWith("</")) {
                return closeTag(name);
            } else if (text_[pos_] == '<') {
                return false;
            } else {
                auto end = text_.find('<', pos_);
                if (end == std::string::npos) return false;
                std::string piece;
                if (!unescape(text_.substr(pos_, end - pos_), piece)) return false;
                out += piece;
                pos_ = end;
            }
        }
    }

    static void putUtf8(std::string& out, unsigned long cp) {
        std::u16string u;
        if (cp >= 0x10000) {
            u.push_back(static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)));
            u.push_back(static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
        } else {
            u.push_back(static_cast<char16_t>(cp));
        }
        std::string enc;
        if (encodeUtf8(u, enc)) out += enc;
    }

    static bool unescape(const std::string& raw, std::string& out) {
        out.clear();
        for (size_t i = 0; i < raw.size(); ++i) {
            if (raw[i] == '<') return false;
            if (raw[i] != '&') {
                out.push_back(raw[i]);
                continue;
            }
            auto semi = raw.find(';', i);
            if (semi == std::string::npos) return false;
            std::string ent = raw.substr(i + 1, semi - i - 1);
            if (ent == "lt") out += '<';
            else if (ent == "gt") out += '>';
            else if (ent == "amp") out += '&';
            else if (ent == "quot") out += '"';
            else if (ent == "apos") out += '\'';
            else if (ent.size() > 1 && ent[0] == '#') {
                char* endp = nullptr;
                unsigned long cp = ent[1] == 'x' ? strtoul(ent.c_str() + 2, &endp, 16)
                                                 : strtoul(ent.c_str() + 1, &endp, 10);
                if (!endp || *endp || cp == 0 || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
                    return false;
                putUtf8(out, cp);
            } else {
                return false;
            }
            i = semi;
        }
        return true;
    }

    // Skips one value; keeps it in *str when it is a string.
    bool value(std::string* str, bool* isString, int depth) {
        if (depth > 64) return false;
        std::string name;
        bool selfClosing;
        if (!openTag(name, selfClosing)) return false;
        *isString = name == "string";
        if (selfClosing) {
            if (*isString) str->clear();
            return name == "string" || name == "true" || name == "false" || name == "dict" ||
                   name == "array" || name == "data";
        }
        if (name == "dict") return dictBody(nullptr, depth + 1);
        if (name == "array") {
            for (;;) {
                skipComments();
                if (startsWith("</")) return closeTag("array");
                std::string ignored;
                bool s;
                if (!value(&ignored, &s, depth + 1)) return false;
            }
        }
        if (name == "string" || name == "integer" || name == "real" || name == "date" ||
            name == "data") {
            std::string t;
            if (!textUntilClose(name.c_str(), t)) return false;
            if (*isString) *str = t;
            return true;
        }
        return false;
    }

    bool dictBody(InfoDictionary* out, int depth = 0) {
        for (;;) {
            skipComments();
            if (startsWith("</")) return closeTag("dict");
            std::string name;
            bool selfClosing;
            if (!openTag(name, selfClosing) || name != "key" || selfClosing) return false;
            std::string key;
            if (!textUntilClose("key", key)) return false;
            std::string v;
            bool isString = false;
            if (!value(&v, &isString, depth + 1)) return false;
            if (out && isString) (*out)[key] = v;
        }
    }

    const std::string& text_;
    size_t pos_ = 0;
};

}  // namespace

bool parseInfoPlist(const std::string& text, InfoDictionary& out) {
    out.clear();
    // Apple's reader takes a UTF-8 byte order mark; we have no other encodings.
    size_t bom = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    std::string body = text.substr(bom);
    PlistParser p(body);
    if (p.parse(out)) return true;
    out.clear();
    return false;
}

InfoDictionary parseInfoPlist(const std::string& text) {
    InfoDictionary d;
    parseInfoPlist(text, d);
    return d;
}

InfoDictionary readInfoPlist(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return {};
    std::ostringstream ss;
    ss << in.rdbuf();
    return parseInfoPlist(ss.str());
}

}  // namespace cfimpl
