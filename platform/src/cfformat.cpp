// Core Foundation's string formatting: printf's conversions plus %S (UTF-16),
// %C (one UTF-16 unit) and %@ (an object's description). An unknown
// conversion prints the character after the '%'; a '%' at the very end prints
// nothing; only absurd widths, precisions or positions give no string.
#include "cfobject.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace cfimpl {
namespace {

constexpr long kMaxField = 1 << 20;  // wider is absurd: no string
constexpr int kMaxPosition = 64;

enum class ArgType { None, Int, Long, Double, LongDouble, Pointer };

struct Directive {
    size_t start = 0, end = 0;  // the directive's extent in the format, '%' included
    int position = 0;           // n$, or 0
    std::string flags;
    long width = -1;            // -1: none
    int widthArg = 0;           // '*': 0 none, -1 next argument, n: argument n
    long precision = -1;
    int precisionArg = 0;
    std::string length;         // "", h, hh, l, ll, q, j, z, t, L
    char conv = 0;              // 0: '%' at the end of the format
};

struct Value {
    long long i = 0;
    double d = 0;
    long double ld = 0;
    const void* p = nullptr;
};

bool isFlag(char16_t c) { return c == '-' || c == '+' || c == ' ' || c == '#' || c == '0' || c == '\''; }
bool isDigit(char16_t c) { return c >= '0' && c <= '9'; }

// Reads a decimal number; false when it is absurdly large.
bool number(const std::u16string& f, size_t& i, long& out) {
    out = 0;
    while (i < f.size() && isDigit(f[i])) {
        out = out * 10 + (f[i++] - '0');
        if (out > kMaxField) return false;
    }
    return true;
}

// After a '*': the argument that holds the field, -1 for the next one or
// n for "n$". False for an absurd position.
bool starArgument(const std::u16string& f, size_t& i, int& arg) {
    arg = -1;
    const size_t save = i;
    long n;
    if (i < f.size() && isDigit(f[i])) {
        if (!number(f, i, n)) return false;
        if (i < f.size() && f[i] == '$' && n >= 1 && n <= kMaxPosition) {
            arg = static_cast<int>(n);
            ++i;
        } else {
            i = save;
        }
    }
    return true;
}

// Parses one directive starting at the '%'. False for an absurd field.
bool parseDirective(const std::u16string& f, size_t i, Directive& s) {
    s.start = i++;
    // n$ position
    size_t save = i;
    long n;
    if (i < f.size() && isDigit(f[i]) && f[i] != '0') {
        if (!number(f, i, n)) return false;
        if (i < f.size() && f[i] == '$') {
            if (n > kMaxPosition) return false;
            s.position = static_cast<int>(n);
            ++i;
        } else {
            i = save;
        }
    }
    while (i < f.size() && isFlag(f[i])) s.flags.push_back(static_cast<char>(f[i++]));
    if (i < f.size() && f[i] == '*') {
        if (!starArgument(f, ++i, s.widthArg)) return false;
    } else if (i < f.size() && isDigit(f[i])) {
        if (!number(f, i, s.width)) return false;
    }
    if (i < f.size() && f[i] == '.') {
        ++i;
        if (i < f.size() && f[i] == '*') {
            if (!starArgument(f, ++i, s.precisionArg)) return false;
        } else {
            if (!number(f, i, s.precision)) return false;
        }
    }
    while (i < f.size() && (f[i] == 'h' || f[i] == 'l' || f[i] == 'q' || f[i] == 'j' ||
                            f[i] == 'z' || f[i] == 't' || f[i] == 'L'))
        s.length.push_back(static_cast<char>(f[i++]));
    if (i < f.size()) {
        s.conv = f[i] < 0x80 ? static_cast<char>(f[i]) : '?';
        ++i;
    }
    s.end = i;
    return true;
}

ArgType typeOf(const Directive& s) {
    switch (s.conv) {
    case 'd': case 'i': case 'u': case 'x': case 'X': case 'o': case 'D': case 'U': case 'O':
        return s.length.empty() || s.length == "h" || s.length == "hh" ? ArgType::Int
                                                                        : ArgType::Long;
    case 'c': case 'C':
        return ArgType::Int;
    case 'f': case 'F': case 'e': case 'E': case 'g': case 'G': case 'a': case 'A':
        return s.length == "L" ? ArgType::LongDouble : ArgType::Double;
    case 's': case 'S': case '@': case 'p':
        return ArgType::Pointer;
    default:
        return ArgType::None;
    }
}

Value fetch(ArgType t, va_list& ap) {
    Value v;
    switch (t) {
    case ArgType::Int: v.i = va_arg(ap, int); break;
    case ArgType::Long: v.i = va_arg(ap, long long); break;
    case ArgType::Double: v.d = va_arg(ap, double); break;
    case ArgType::LongDouble: v.ld = va_arg(ap, long double); break;
    case ArgType::Pointer: v.p = va_arg(ap, const void*); break;
    case ArgType::None: break;
    }
    return v;
}

void pad(std::u16string& out, const std::u16string& body, long width, bool left) {
    long fill = width > static_cast<long>(body.size()) ? width - static_cast<long>(body.size()) : 0;
    if (!left) out.append(static_cast<size_t>(fill), u' ');
    out += body;
    if (left) out.append(static_cast<size_t>(fill), u' ');
}

// printf's own conversions, through the C library, widened from Mac Roman.
// The directive handed to snprintf is rebuilt from parsed parts only: known flags,
// numbers, a length we choose and a conversion that matches the value's type.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
bool printfConversion(std::u16string& out, const Directive& s, const std::string& flags, long width,
                      long precision, const Value& v) {
    std::string cfmt = "%" + flags;
    if (width >= 0) cfmt += std::to_string(width);
    if (precision >= 0) cfmt += "." + std::to_string(precision);
    char conv = s.conv;
    if (conv == 'D' || conv == 'U' || conv == 'O') conv = static_cast<char>(conv + ('a' - 'A'));
    const ArgType type = typeOf(s);
    long long x = v.i;
    switch (type) {
    case ArgType::Int:
    case ArgType::Long: {
        bool isSigned = conv == 'd' || conv == 'i';
        if (conv == 'c') {
            cfmt += 'c';
            break;
        }
        // Narrow as printf would, each branch on its own: a conditional
        // expression would convert the signed value to the unsigned type.
        if (s.length == "h") {
            if (isSigned) x = static_cast<short>(x);
            else x = static_cast<unsigned short>(x);
        } else if (s.length == "hh") {
            if (isSigned) x = static_cast<signed char>(x);
            else x = static_cast<unsigned char>(x);
        } else if (type == ArgType::Int) {
            if (isSigned) x = static_cast<int>(x);
            else x = static_cast<unsigned int>(x);
        }
        cfmt += "ll";
        cfmt += conv;
        break;
    }
    case ArgType::Double:
        cfmt += conv;
        break;
    case ArgType::LongDouble:
        cfmt += 'L';
        cfmt += conv;
        break;
    default:
        cfmt += 'p';
        break;
    }
    auto print = [&](std::vector<char>& buf) {
        switch (type) {
        case ArgType::Int:
        case ArgType::Long:
            if (conv == 'c') return std::snprintf(buf.data(), buf.size(), cfmt.c_str(), static_cast<int>(x));
            return std::snprintf(buf.data(), buf.size(), cfmt.c_str(), x);
        case ArgType::Double: return std::snprintf(buf.data(), buf.size(), cfmt.c_str(), v.d);
        case ArgType::LongDouble: return std::snprintf(buf.data(), buf.size(), cfmt.c_str(), v.ld);
        default: return std::snprintf(buf.data(), buf.size(), cfmt.c_str(), v.p);
        }
    };
    std::vector<char> buf(static_cast<size_t>((width > precision ? width : precision) + 512));
    int n = print(buf);
    if (n >= 0 && static_cast<size_t>(n) >= buf.size()) {
        // A long double of the largest magnitude runs to thousands of digits.
        buf.resize(static_cast<size_t>(n) + 1);
        n = print(buf);
    }
    if (n < 0 || static_cast<size_t>(n) >= buf.size()) return false;
    std::u16string wide;
    decodeMacRoman(buf.data(), static_cast<size_t>(n), wide);
    out += wide;
    return true;
}
#pragma GCC diagnostic pop

}  // namespace

CFStringRef formatString(CFStringRef format, va_list arguments) {
    if (!format) return nullptr;
    const std::u16string& f = format->units;

    // First pass: the directives, and the type of every positional argument.
    std::vector<Directive> directives;
    ArgType positional[kMaxPosition + 1] = {};
    bool anyPositional = false, anySequential = false;
    for (size_t i = 0; i < f.size();) {
        if (f[i] != '%') {
            ++i;
            continue;
        }
        Directive s;
        if (!parseDirective(f, i, s)) return nullptr;
        i = s.end;
        directives.push_back(s);
        if (s.conv == '%' || s.conv == 0) continue;
        ArgType t = typeOf(s);
        auto note = [&](int pos, ArgType type) {
            if (pos > 0) {
                anyPositional = true;
                if (positional[pos] != ArgType::None && positional[pos] != type) return false;
                positional[pos] = type;
            } else {
                anySequential = true;
            }
            return true;
        };
        if (s.widthArg && !note(s.widthArg > 0 ? s.widthArg : 0, ArgType::Int)) return nullptr;
        if (s.precisionArg && !note(s.precisionArg > 0 ? s.precisionArg : 0, ArgType::Int))
            return nullptr;
        if (t != ArgType::None && !note(s.position, t)) return nullptr;
    }
    if (anyPositional && anySequential) return nullptr;

    va_list ap;
    va_copy(ap, arguments);
    Value byPosition[kMaxPosition + 1];
    if (anyPositional) {
        int last = 0;
        for (int p = 1; p <= kMaxPosition; ++p)
            if (positional[p] != ArgType::None) last = p;
        for (int p = 1; p <= last; ++p) {
            if (positional[p] == ArgType::None) {  // a gap: its type is unknown
                va_end(ap);
                return nullptr;
            }
            byPosition[p] = fetch(positional[p], ap);
        }
    }

    std::u16string out;
    size_t at = 0;
    bool ok = true;
    for (const Directive& s : directives) {
        out.append(f, at, s.start - at);
        at = s.end;
        if (s.conv == 0) continue;  // '%' at the very end prints nothing
        if (s.conv == '%') {
            out.push_back(u'%');
            continue;
        }
        long width = s.width, precision = s.precision;
        bool left = s.flags.find('-') != std::string::npos;
        std::string flags = s.flags;
        if (s.widthArg) {
            // long: negating INT_MIN as an int would overflow.
            long w = s.widthArg > 0 ? static_cast<int>(byPosition[s.widthArg].i) : va_arg(ap, int);
            if (w < 0) {
                left = true;
                w = -w;
                flags += '-';  // printf's conversions must justify left too
            }
            width = w;
        }
        if (s.precisionArg) {
            int pr = s.precisionArg > 0 ? static_cast<int>(byPosition[s.precisionArg].i) : va_arg(ap, int);
            precision = pr < 0 ? -1 : pr;
        }
        if (width > kMaxField || precision > kMaxField) {
            ok = false;
            break;
        }
        ArgType t = typeOf(s);
        if (t == ArgType::None) {
            // Unknown conversion: the character after the '%'.
            out.push_back(f[s.start + 1]);
            continue;
        }
        Value v = s.position ? byPosition[s.position] : fetch(t, ap);
        std::u16string body;
        switch (s.conv) {
        case 'S': {
            auto* u = static_cast<const UniChar*>(v.p);
            if (!u) {
                body = u"(null)";
            } else {
                // The precision is checked first: the text may end there unterminated.
                for (long k = 0; (precision < 0 || k < precision) && u[k]; ++k)
                    body.push_back(static_cast<char16_t>(u[k]));
            }
            pad(out, body, width, left);
            break;
        }
        case 's': {
            auto* b = static_cast<const char*>(v.p);
            if (!b) {
                body = u"(null)";
            } else {
                size_t n = 0;
                while ((precision < 0 || static_cast<long>(n) < precision) && b[n]) ++n;
                decodeMacRoman(b, n, body);
            }
            pad(out, body, width, left);
            break;
        }
        case 'C':
            body.push_back(static_cast<char16_t>(v.i & 0xFFFF));
            pad(out, body, width, left);
            break;
        case '@': {
            auto* obj = static_cast<const Object*>(v.p);
            if (!obj) body = u"(null)";
            else if (obj->type == kString) body = static_cast<CFStringRef>(v.p)->units;
            else body = u"<CFType>";
            pad(out, body, width, left);
            break;
        }
        default:
            ok = printfConversion(out, s, flags, width, precision, v);
        }
        if (!ok) break;
    }
    va_end(ap);
    if (!ok) return nullptr;
    out.append(f, at, std::u16string::npos);
    return makeString(std::move(out));
}

}  // namespace cfimpl

extern "C" CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef, CFDictionaryRef,
                                                            CFStringRef format, va_list arguments) {
    return cfimpl::formatString(format, arguments);
}

extern "C" CFStringRef CFStringCreateWithFormat(CFAllocatorRef alloc, CFDictionaryRef options,
                                                CFStringRef format, ...) {
    va_list ap;
    va_start(ap, format);
    CFStringRef s = CFStringCreateWithFormatAndArguments(alloc, options, format, ap);
    va_end(ap);
    return s;
}
