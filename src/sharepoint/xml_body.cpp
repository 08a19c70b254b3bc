#include "sharepoint/xml_body.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

#include "frame/diagnostics/diagnostics.h"

namespace SharePoint2013::Utility {

namespace {

// The parser takes its memory from functions that are the same for the whole process; what one thread may take while it
// parses is counted here.
thread_local std::size_t budget = std::numeric_limits<std::size_t>::max();

void* Allocate(std::size_t size) {
    if (size > budget) {
        return nullptr;
    }
    if (budget != std::numeric_limits<std::size_t>::max()) {
        budget -= size;
    }
    return std::malloc(size);
}

void Free(void* block) { std::free(block); }

class Budget {
public:
    explicit Budget(std::size_t bytes) noexcept { budget = bytes; }
    ~Budget() { budget = std::numeric_limits<std::size_t>::max(); }
    Budget(const Budget&) = delete;
    Budget& operator=(const Budget&) = delete;
};

struct TextWriter final : pugi::xml_writer {
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const wchar_t*>(data), size / sizeof(wchar_t));
    }
    std::wstring text;
};

/// True for a body that the parser would take for UTF-8: it begins as XML does, in single bytes, and declares no Latin-1.
bool IsUtf8Xml(std::string_view body) noexcept {
    constexpr std::size_t longest_declaration = 256;
    if (body.size() < 4 || body[0] != '<' || body.substr(0, 4).find('\0') != std::string_view::npos) {
        return false;
    }
    if (!body.starts_with("<?xm")) {
        return true;
    }
    const std::string_view head = body.substr(0, longest_declaration);
    const std::string_view declaration = head.substr(0, head.find("?>"));
    return declaration.size() != head.size() && declaration.find("8859-1") == std::string_view::npos &&
           declaration.find("n1") == std::string_view::npos && declaration.find("N1") == std::string_view::npos;
}

/// Widens one character or sequence (RFC 3629 section 3). As in the parser, a byte that belongs to none is left out, and what
/// a whole sequence stands for isn't questioned.
void WidenOne(const char*& at, const char* end, wchar_t*& out) noexcept {
    const auto lead = static_cast<unsigned char>(*at);
    const std::ptrdiff_t tails = lead < 0xC0 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : lead < 0xF8 ? 3 : 0;
    const auto is_tail = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    if (lead < 0x80) {
        *out++ = lead;
    } else if (tails != 0 && end - at > tails && std::all_of(at + 1, at + 1 + tails, is_tail)) {
        char32_t value = lead & (0x3Fu >> tails);
        for (std::ptrdiff_t i = 1; i <= tails; ++i) {
            value = (value << 6) | (static_cast<unsigned char>(at[i]) & 0x3Fu);
        }
        *out++ = static_cast<wchar_t>(value);
        at += tails;
    }
    ++at;
}

/// UTF-8 as wide characters, no more of them than there are bytes; gives their end. Sixteen bytes at once while they are
/// ASCII: the parser's own conversion takes as long as the rest of its work.
wchar_t* Widen(std::string_view text, wchar_t* out) noexcept {
    constexpr std::size_t step = 16;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        unsigned char bytes[step];
        std::uint64_t halves[2] = {~std::uint64_t{0}};
        if (static_cast<std::size_t>(end - at) >= step) {
            std::memcpy(bytes, at, step);
            std::memcpy(halves, at, step);
        }
        if (((halves[0] | halves[1]) & 0x8080808080808080u) != 0) {
            WidenOne(at, end, out);
            continue;
        }
        std::copy(std::begin(bytes), std::end(bytes), out);
        at += step;
        out += step;
    }
    return out;
}

/// The text of the body in a block for the parser, zero included. `out_size` is in bytes. The body is given up on the way.
wchar_t* WideText(Http::ByteStream body, std::size_t& out_size) {
    auto* const text = static_cast<wchar_t*>(Allocate((body.Size() + 1) * sizeof(wchar_t)));
    CHECK_OR_THROW(text != nullptr, HResultException(E_OUTOFMEMORY, L""));
    wchar_t* const end = Widen(body.View(), text);
    *end = L'\0';
    out_size = static_cast<std::size_t>(end + 1 - text) * sizeof(wchar_t);
    return text;
}

/// The document frees the block that it is given.
pugi::xml_parse_result Load(pugi::xml_document& document, Http::ByteStream&& body) {
    std::size_t size = body.Size();
    if (!IsUtf8Xml(body.View())) {
        return document.load_buffer_inplace_own(body.Detach(), size);
    }
    wchar_t* const text = WideText(std::move(body), size);
    return document.load_buffer_inplace_own(text, size, pugi::parse_default, pugi::encoding_wchar);
}

} // namespace

pugi::xml_parse_result ParseXml(pugi::xml_document& document, Http::ByteStream&& body) {
    static const bool counts_memory = (pugi::set_memory_management_functions(Allocate, Free), true);
    (void)counts_memory;
    const Budget limit(MaxXmlDocument(body.Size()));
    document.reset();
    const pugi::xml_parse_result result = Load(document, std::move(body));
    CHECK_OR_THROW(result.status != pugi::status_out_of_memory, HResultException(E_OUTOFMEMORY, L""));
    return result;
}

std::wstring PrintXml(pugi::xml_node node) {
    TextWriter writer;
    node.print(writer, L"", pugi::format_raw, pugi::encoding_wchar);
    return std::move(writer.text);
}

} // namespace SharePoint2013::Utility
