#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <string>
#include <string_view>

// UTF-8 <-> UTF-16 conversion with the platform's lenient rules: continuation bytes are not
// checked, stray continuation bytes become one unit each, and only a sequence cut short by the
// end of the input is an error. Unpaired surrogates vanish when converting back to UTF-8.
namespace abinder {

// Number of UTF-16 units for the input, or -1 if a multi-byte sequence runs past its end.
ssize_t utf8ToUtf16Length(const uint8_t* src, size_t srcLen);
// Converts and appends a NUL; dst must hold utf8ToUtf16Length(src, srcLen) + 1 units.
void utf8ToUtf16(const uint8_t* src, size_t srcLen, char16_t* dst, size_t dstLen);

// Number of UTF-8 bytes (without NUL) for the input, or -1 for an empty input.
ssize_t utf16ToUtf8Length(const char16_t* src, size_t srcLen);
// Converts and appends a NUL when there is room; dst holds dstLen bytes.
void utf16ToUtf8(const char16_t* src, size_t srcLen, char* dst, size_t dstLen);

// Whole-string helpers; an undecodable input gives an empty result.
std::u16string utf8ToUtf16String(std::string_view utf8);
std::string utf16ToUtf8String(std::u16string_view utf16);

}  // namespace abinder
