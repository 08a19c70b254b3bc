#include "sharepoint/xml_body.h"

#include <cstdlib>
#include <limits>

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

} // namespace

pugi::xml_parse_result ParseXml(pugi::xml_document& document, Http::ByteStream&& body) {
    static const bool counts_memory = (pugi::set_memory_management_functions(Allocate, Free), true);
    (void)counts_memory;
    const std::size_t size = body.Size();
    const Budget limit(MaxXmlDocument(size));
    document.reset();
    // The document frees the block as soon as it has the text as wide characters.
    const pugi::xml_parse_result result = document.load_buffer_inplace_own(body.Detach(), size);
    CHECK_OR_THROW(result.status != pugi::status_out_of_memory, HResultException(E_OUTOFMEMORY, L""));
    return result;
}

std::wstring PrintXml(pugi::xml_node node) {
    TextWriter writer;
    node.print(writer, L"", pugi::format_raw, pugi::encoding_wchar);
    return std::move(writer.text);
}

} // namespace SharePoint2013::Utility
