// Reader for localized string tables: the old-style property list form
// ("key" = "value"; with comments), or the XML form, in UTF-8 or in UTF-16 or
// UTF-32 with a byte order mark. Any error fails the whole table, as Apple's
// reader does; nested arrays, dictionaries and data parse but hold no text.
#include "cfobject.h"

namespace cfimpl {
namespace {

bool decodeUtf16(const std::string& b, size_t from, bool bigEndian, std::u16string& out) {
    if ((b.size() - from) % 2) return false;
    out.clear();
    for (size_t i = from; i < b.size(); i += 2) {
        auto hi = static_cast<unsigned char>(b[bigEndian ? i : i + 1]);
        auto lo = static_cast<unsigned char>(b[bigEndian ? i + 1 : i]);
        out.push_back(static_cast<char16_t>(hi << 8 | lo));
    }
    return true;
}

bool decodeUtf32(const std::string& b, bool bigEndian, std::u16string& out) {
    if (b.size() % 4) return false;
    out.clear();
    for (size_t i = 4; i < b.size(); i += 4) {
        char32_t cp = 0;
        for (size_t k = 0; k < 4; ++k)
            cp = cp << 8 | static_cast<unsigned char>(b[i + (bigEndian ? k : 3 - k)]);
        if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
        if (cp >= 0x10000) {
            out.push_back(static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(cp));
        }
    }
    return true;
}

bool startsWith(const std::string& b, const char* bom, size_t n) { return b.compare(0, n, bom, n) == 0; }

bool decodeTable(const std::string& b, std::u16string& out) {
    if (startsWith(b, "\x00\x00\xFE\xFF", 4)) return decodeUtf32(b, true, out);
    if (startsWith(b, "\xFF\xFE\x00\x00", 4)) return decodeUtf32(b, false, out);
    if (startsWith(b, "\xFE\xFF", 2)) return decodeUtf16(b, 2, true, out);
    if (startsWith(b, "\xFF\xFE", 2)) return decodeUtf16(b, 2, false, out);
    return decodeUtf8(b.data(), b.size(), out);  // drops a UTF-8 byte order mark
}

bool isSpace(char16_t c) { return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x2028 || c == 0x2029; }
bool isLineEnd(char16_t c) { return c == '\n' || c == '\r' || c == 0x2028 || c == 0x2029; }
bool isUnquoted(char16_t c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '$' || c == '/' || c == ':' || c == '.' || c == '-';
}
int hexValue(char16_t c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

class OldStyleParser {
  public:
    explicit OldStyleParser(const std::u16string& t) : t_(t) {}

    // The whole text: one dictionary in braces, or its content without them.
    bool parse(StringsTable& out) {
        if (!skip()) return false;
        if (pos_ < t_.size() && t_[pos_] == '{') {
            ++pos_;
            if (!dictContent(&out, u'}', 0)) return false;
            return skip() && pos_ == t_.size();
        }
        return dictContent(&out, 0, 0);
    }

  private:
    static constexpr int kMaxDepth = 256;

    // Whitespace and comments; false on a comment left open.
    bool skip() {
        while (pos_ < t_.size()) {
            char16_t c = t_[pos_];
            if (isSpace(c)) {
                ++pos_;
            } else if (c == '/' && pos_ + 1 < t_.size() && t_[pos_ + 1] == '/') {
                while (pos_ < t_.size() && !isLineEnd(t_[pos_])) ++pos_;
            } else if (c == '/' && pos_ + 1 < t_.size() && t_[pos_ + 1] == '*') {
                auto end = t_.find(u"*/", pos_ + 2);
                if (end == std::u16string::npos) return false;
                pos_ = end + 2;
            } else {
                return true;
            }
        }
        return true;
    }

    // Pairs up to `close` (0: the end of the text). "key;" files the key as its own text.
    bool dictContent(StringsTable* out, char16_t close, int depth) {
        for (;;) {
            if (!skip()) return false;
            if (pos_ >= t_.size()) return close == 0;
            if (close && t_[pos_] == close) {
                ++pos_;
                return true;
            }
            std::u16string key;
            bool isString = false;
            if (!object(&key, &isString, depth + 1) || !isString) return false;
            if (!skip() || pos_ >= t_.size()) return false;
            if (t_[pos_] == ';') {
                ++pos_;
                if (out) (*out)[key] = key;
                continue;
            }
            if (t_[pos_] != '=') return false;
            ++pos_;
            if (!skip()) return false;
            std::u16string value;
            if (!object(&value, &isString, depth + 1)) return false;
            if (!skip() || pos_ >= t_.size() || t_[pos_] != ';') return false;
            ++pos_;
            if (out && isString) (*out)[key] = value;
        }
    }

    bool object(std::u16string* text, bool* isString, int depth) {
        if (depth > kMaxDepth || pos_ >= t_.size()) return false;
        char16_t c = t_[pos_];
        *isString = false;
        if (c == '"' || c == '\'') {
            *isString = true;
            return quoted(*text);
        }
        if (isUnquoted(c)) {
            *isString = true;
            size_t start = pos_;
            while (pos_ < t_.size() && isUnquoted(t_[pos_])) ++pos_;
            text->assign(t_, start, pos_ - start);
            return true;
        }
        ++pos_;
        if (c == '{') return dictContent(nullptr, u'}', depth);
        if (c == '(') return array(depth);
        if (c == '<') return data();
        return false;
    }

    bool array(int depth) {
        for (;;) {
            if (!skip() || pos_ >= t_.size()) return false;
            if (t_[pos_] == ')') {
                ++pos_;
                return true;
            }
            std::u16string ignored;
            bool isString;
            if (!object(&ignored, &isString, depth + 1) || !skip() || pos_ >= t_.size()) return false;
            if (t_[pos_] == ',') ++pos_;
            else if (t_[pos_] != ')') return false;
        }
    }

    // Hex digits in pairs up to '>', whitespace between pairs.
    bool data() {
        for (;;) {
            while (pos_ < t_.size() && isSpace(t_[pos_])) ++pos_;
            if (pos_ >= t_.size()) return false;
            if (t_[pos_] == '>') {
                ++pos_;
                return true;
            }
            if (pos_ + 1 >= t_.size() || hexValue(t_[pos_]) < 0 || hexValue(t_[pos_ + 1]) < 0)
                return false;
            pos_ += 2;
        }
    }

    bool quoted(std::u16string& out) {
        char16_t quote = t_[pos_++];
        out.clear();
        while (pos_ < t_.size()) {
            char16_t c = t_[pos_++];
            if (c == quote) return true;
            if (c != '\\') {
                out.push_back(c);
                continue;
            }
            if (pos_ >= t_.size()) return false;
            out.push_back(escaped());
        }
        return false;  // no closing quote
    }

    // The character after a backslash, and what follows it.
    char16_t escaped() {
        char16_t c = t_[pos_++];
        switch (c) {
        case 'a': return 0x07;
        case 'b': return 0x08;
        case 'f': return 0x0C;
        case 'n': return 0x0A;
        case 'r': return 0x0D;
        case 't': return 0x09;
        case 'v': return 0x0B;
        case 'U': {
            unsigned v = 0;
            for (int k = 0; k < 4 && pos_ < t_.size() && hexValue(t_[pos_]) >= 0; ++k)
                v = v << 4 | static_cast<unsigned>(hexValue(t_[pos_++]));
            return static_cast<char16_t>(v);
        }
        default:
            break;
        }
        if (c >= '0' && c <= '7') {
            unsigned v = c - '0';
            for (int k = 1; k < 3 && pos_ < t_.size() && t_[pos_] >= '0' && t_[pos_] <= '7'; ++k)
                v = v << 3 | (t_[pos_++] - '0');
            return static_cast<char16_t>(v);
        }
        return c;  // \" \' \\ and a backslash before a line end among them
    }

    const std::u16string& t_;
    size_t pos_ = 0;
};

bool looksLikeXml(const std::u16string& t) {
    size_t i = 0;
    while (i < t.size() && isSpace(t[i])) ++i;
    return t.compare(i, 5, u"<?xml") == 0 || t.compare(i, 6, u"<plist") == 0 ||
           t.compare(i, 9, u"<!DOCTYPE") == 0;
}

}  // namespace

bool parseStringsTable(const std::string& bytes, StringsTable& out) {
    out.clear();
    std::u16string text;
    if (!decodeTable(bytes, text)) return false;
    if (looksLikeXml(text)) {
        std::string utf8Text;
        if (!encodeUtf8(text, utf8Text)) return false;
        InfoDictionary d;
        if (!parseInfoPlist(utf8Text, d)) return false;
        for (const auto& kv : d) {
            std::u16string k, v;
            if (decodeUtf8(kv.first.data(), kv.first.size(), k) &&
                decodeUtf8(kv.second.data(), kv.second.size(), v))
                out[k] = v;
        }
        return true;
    }
    if (!OldStyleParser(text).parse(out)) {
        out.clear();
        return false;
    }
    return true;
}

}  // namespace cfimpl
