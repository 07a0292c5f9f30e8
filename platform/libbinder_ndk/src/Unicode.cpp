#include "Unicode.h"

namespace abinder {

namespace {

constexpr char32_t kSurrogateStart = 0xD800;
constexpr char32_t kSurrogateEnd = 0xDFFF;
constexpr char32_t kMaxCodepoint = 0x10FFFF;

// 1 for ASCII and stray continuation bytes, 2 for 0xC0-0xDF, 3 for 0xE0-0xEF, 4 from 0xF0 up.
size_t utf8SequenceLength(uint8_t lead) {
    if (lead < 0xC0) return 1;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return 4;
}

char32_t decodeSequence(const uint8_t* src, size_t length) {
    switch (length) {
        case 1:
            return src[0];
        case 2:
            return (char32_t(src[0] & 0x1F) << 6) | (src[1] & 0x3F);
        case 3:
            return (char32_t(src[0] & 0x0F) << 12) | (char32_t(src[1] & 0x3F) << 6) |
                   (src[2] & 0x3F);
        default:
            return (char32_t(src[0] & 0x07) << 18) | (char32_t(src[1] & 0x3F) << 12) |
                   (char32_t(src[2] & 0x3F) << 6) | (src[3] & 0x3F);
    }
}

// Bytes needed to encode one UTF-16 unit or pair value; 0 for values that cannot be encoded.
size_t utf8EncodedLength(char32_t c) {
    if (c < 0x80) return 1;
    if (c < 0x800) return 2;
    if (c < 0x10000) return (c >= kSurrogateStart && c <= kSurrogateEnd) ? 0 : 3;
    if (c <= kMaxCodepoint) return 4;
    return 0;
}

void encodeUtf8(char32_t c, size_t length, char* dst) {
    switch (length) {
        case 1:
            dst[0] = static_cast<char>(c);
            break;
        case 2:
            dst[0] = static_cast<char>(0xC0 | (c >> 6));
            dst[1] = static_cast<char>(0x80 | (c & 0x3F));
            break;
        case 3:
            dst[0] = static_cast<char>(0xE0 | (c >> 12));
            dst[1] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            dst[2] = static_cast<char>(0x80 | (c & 0x3F));
            break;
        case 4:
            dst[0] = static_cast<char>(0xF0 | (c >> 18));
            dst[1] = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            dst[2] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            dst[3] = static_cast<char>(0x80 | (c & 0x3F));
            break;
        default:
            break;
    }
}

bool isPair(const char16_t* cur, const char16_t* end) {
    return (cur[0] & 0xFC00) == 0xD800 && cur + 1 < end && (cur[1] & 0xFC00) == 0xDC00;
}

}  // namespace

ssize_t utf8ToUtf16Length(const uint8_t* src, size_t srcLen) {
    const uint8_t* cur = src;
    const uint8_t* const end = src + srcLen;
    ssize_t units = 0;
    while (cur < end) {
        const size_t length = utf8SequenceLength(*cur);
        if (static_cast<size_t>(end - cur) < length) return -1;
        units += decodeSequence(cur, length) > 0xFFFF ? 2 : 1;
        cur += length;
    }
    return units;
}

void utf8ToUtf16(const uint8_t* src, size_t srcLen, char16_t* dst, size_t dstLen) {
    if (dstLen == 0) return;
    const uint8_t* cur = src;
    const uint8_t* const end = src + srcLen;
    char16_t* out = dst;
    char16_t* const outEnd = dst + dstLen - 1;  // room for the NUL
    while (cur < end && out < outEnd) {
        const size_t length = utf8SequenceLength(*cur);
        if (static_cast<size_t>(end - cur) < length) break;
        const char32_t c = decodeSequence(cur, length);
        cur += length;
        if (c <= 0xFFFF) {
            *out++ = static_cast<char16_t>(c);
        } else {
            if (outEnd - out < 2) break;
            *out++ = static_cast<char16_t>((c >> 10) + 0xD7C0);
            *out++ = static_cast<char16_t>((c & 0x3FF) | 0xDC00);
        }
    }
    *out = 0;
}

ssize_t utf16ToUtf8Length(const char16_t* src, size_t srcLen) {
    if (src == nullptr || srcLen == 0) return -1;
    const char16_t* cur = src;
    const char16_t* const end = src + srcLen;
    ssize_t bytes = 0;
    while (cur < end) {
        if (isPair(cur, end)) {
            bytes += 4;
            cur += 2;
        } else {
            bytes += static_cast<ssize_t>(utf8EncodedLength(*cur));
            cur += 1;
        }
    }
    return bytes;
}

void utf16ToUtf8(const char16_t* src, size_t srcLen, char* dst, size_t dstLen) {
    if (src == nullptr || srcLen == 0 || dst == nullptr || dstLen == 0) return;
    const char16_t* cur = src;
    const char16_t* const end = src + srcLen;
    char* out = dst;
    char* const outEnd = dst + dstLen - 1;  // room for the NUL
    while (cur < end) {
        char32_t c;
        if (isPair(cur, end)) {
            c = ((char32_t(cur[0]) - 0xD800) << 10) + (char32_t(cur[1]) - 0xDC00) + 0x10000;
            cur += 2;
        } else {
            c = *cur;
            cur += 1;
        }
        const size_t length = utf8EncodedLength(c);
        if (static_cast<size_t>(outEnd - out) < length) break;
        encodeUtf8(c, length, out);
        out += length;
    }
    *out = '\0';
}

std::u16string utf8ToUtf16String(std::string_view utf8) {
    const uint8_t* src = reinterpret_cast<const uint8_t*>(utf8.data());
    const ssize_t units = utf8ToUtf16Length(src, utf8.size());
    if (units <= 0) return {};
    std::u16string out(static_cast<size_t>(units), u'\0');
    utf8ToUtf16(src, utf8.size(), out.data(), out.size() + 1);
    return out;
}

std::string utf16ToUtf8String(std::u16string_view utf16) {
    const ssize_t bytes = utf16ToUtf8Length(utf16.data(), utf16.size());
    if (bytes <= 0) return {};
    std::string out(static_cast<size_t>(bytes), '\0');
    utf16ToUtf8(utf16.data(), utf16.size(), out.data(), out.size() + 1);
    return out;
}

}  // namespace abinder
