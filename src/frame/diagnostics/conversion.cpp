#include "frame/diagnostics/conversion.h"

#include <stdexcept>

#include "frame/diagnostics/exceptions.h"
#include "platform/text.h"

namespace {

constexpr wchar_t failure_text[] = L"bad conversion";

}

std::wstring WideOrThrow(std::string_view text) {
    try {
        return WideFromUtf8(text);
    } catch (const std::range_error&) {
        throw Exception(failure_text);
    }
}

std::string Utf8OrThrow(std::wstring_view text) {
    try {
        return Utf8FromWide(text);
    } catch (const std::range_error&) {
        throw Exception(failure_text);
    }
}
