// Dialog description files: which controls a dialog has, of which kind, with
// which caption. The format is described at the top of
// resources/dialog20009.dlg.
#include "uistate.h"

#include <cctype>
#include <cstdlib>
#include <set>

namespace hostsim {
namespace ui {
namespace {

struct Token {
    std::string text;
    bool quoted;
};

// Splits a line into words and quoted texts (escapes \" \\ \n). False on an
// unterminated quote or a bad escape.
bool tokenize(const std::string& line, std::vector<Token>* out, std::string* why) {
    out->clear();
    size_t i = 0;
    while (i < line.size()) {
        char c = line[i];
        if (c == ' ' || c == '\t' || c == '\r') {
            ++i;
        } else if (c == '#') {
            break;
        } else if (c == '"') {
            std::string t;
            ++i;
            for (;;) {
                if (i >= line.size()) {
                    *why = "unterminated text";
                    return false;
                }
                char d = line[i++];
                if (d == '"') break;
                if (d == '\\') {
                    if (i >= line.size()) {
                        *why = "unterminated text";
                        return false;
                    }
                    char e = line[i++];
                    if (e == 'n') t.push_back('\n');
                    else if (e == '"' || e == '\\') t.push_back(e);
                    else {
                        *why = std::string("unknown escape \\") + e;
                        return false;
                    }
                } else {
                    t.push_back(d);
                }
            }
            out->push_back({t, true});
        } else {
            size_t j = i;
            while (j < line.size() && line[j] != ' ' && line[j] != '\t' && line[j] != '\r' &&
                   line[j] != '"' && line[j] != '#')
                ++j;
            out->push_back({line.substr(i, j - i), false});
            i = j;
        }
    }
    return true;
}

bool number(const Token& t, long lo, long hi, long* out) {
    if (t.quoted || t.text.empty() || t.text.size() > 11) return false;
    size_t start = t.text[0] == '-' ? 1 : 0;
    if (start == t.text.size()) return false;
    for (size_t k = start; k < t.text.size(); ++k)
        if (!std::isdigit(static_cast<unsigned char>(t.text[k]))) return false;
    long v = std::strtol(t.text.c_str(), nullptr, 10);
    if (v < lo || v > hi) return false;
    *out = v;
    return true;
}

bool validText(const std::string& s) {
    std::u16string units;
    return fromUtf8(s, &units);
}

// caption := "string" NUMBER | TEXT (LANGUAGE TEXT)*
bool caption(const std::vector<Token>& t, size_t at, Caption* out, std::string* why) {
    *out = Caption();
    if (at >= t.size()) {
        *why = "caption missing";
        return false;
    }
    if (!t[at].quoted && t[at].text == "string") {
        long n = 0;
        if (at + 1 >= t.size() || !number(t[at + 1], INT32_MIN, INT32_MAX, &n) || n == 0) {
            *why = "string needs a nonzero string number";
            return false;
        }
        if (at + 2 < t.size()) {
            *why = "unexpected '" + t[at + 2].text + "' after the string number";
            return false;
        }
        out->stringNumber = static_cast<int32_t>(n);
        return true;
    }
    if (!t[at].quoted) {
        *why = "caption must be string N or a quoted text, not '" + t[at].text + "'";
        return false;
    }
    out->text = t[at].text;
    for (size_t k = at + 1; k < t.size(); k += 2) {
        const std::string& lang = t[k].text;
        bool word = !t[k].quoted && !lang.empty();
        for (char c : lang)
            if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_') word = false;
        if (!word || k + 1 >= t.size() || !t[k + 1].quoted) {
            *why = "expected a language and its quoted text at '" + lang + "'";
            return false;
        }
        if (!out->byLanguage.emplace(lang, t[k + 1].text).second) {
            *why = "language " + lang + " given twice";
            return false;
        }
    }
    bool ok = validText(out->text);
    for (const auto& entry : out->byLanguage) ok = ok && validText(entry.second);
    if (!ok) {
        *why = "text is not UTF-8";
        return false;
    }
    return true;
}

bool kindOf(const Token& t, ControlKind* out) {
    static const std::pair<const char*, ControlKind> kinds[] = {
        {"button", ControlKind::Button}, {"number", ControlKind::Number},
        {"text", ControlKind::Text},     {"static", ControlKind::Static},
        {"checkbox", ControlKind::CheckBox}};
    if (t.quoted) return false;
    for (const auto& k : kinds) {
        if (t.text == k.first) {
            *out = k.second;
            return true;
        }
    }
    return false;
}

}  // namespace

bool parseDialog(const std::string& text, DialogLayout* out, std::string* error) {
    DialogLayout layout;
    bool haveDialog = false;
    std::set<int16_t> seen;
    size_t lineNo = 0;
    size_t pos = 0;
    std::string why;
    std::vector<Token> t;
    while (pos <= text.size()) {
        size_t end = text.find('\n', pos);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(pos, end - pos);
        pos = end + 1;
        ++lineNo;
        auto fail = [&](const std::string& w) {
            if (error) *error = "line " + std::to_string(lineNo) + ": " + w;
            return false;
        };
        if (!tokenize(line, &t, &why)) return fail(why);
        if (t.empty()) continue;
        long n = 0;
        if (!haveDialog) {
            if (t[0].quoted || t[0].text != "dialog")
                return fail("the first line must be: dialog NUMBER");
            if (t.size() < 2 || !number(t[1], 1, INT16_MAX, &n))
                return fail("dialog needs a number from 1 to 32767");
            layout.number = static_cast<int16_t>(n);
            if (t.size() > 2 && !caption(t, 2, &layout.title, &why)) return fail(why);
            haveDialog = true;
            continue;
        }
        ControlLayout c;
        if (!number(t[0], 1, INT16_MAX, &n))
            return fail("a control line begins with its number, from 1 to 32767");
        c.number = static_cast<int16_t>(n);
        if (!seen.insert(c.number).second) return fail("control " + t[0].text + " given twice");
        if (t.size() < 2 || !kindOf(t[1], &c.kind))
            return fail("kind must be button, number, text, static or checkbox");
        if (!caption(t, 2, &c.caption, &why)) return fail(why);
        layout.controls.push_back(c);
    }
    if (!haveDialog) {
        if (error) *error = "line " + std::to_string(lineNo) + ": no dialog line";
        return false;
    }
    *out = layout;
    return true;
}

}  // namespace ui
}  // namespace hostsim
