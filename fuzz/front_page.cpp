// The answers of FrontPage RPC, and paths on their way there: decoding never makes a text longer, encoding stays ASCII.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "frame/diagnostics/conversion.h"
#include "frame/diagnostics/exceptions.h"
#include "sharepoint/rpc_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const std::wstring text = WideOrThrow({reinterpret_cast<const char*>(data), size});
        FrontPage::RefusesEdit(text);
        std::wstring name;
        FrontPage::FindUserName(L"<li>vti_username\n<li>SX|" + text, name);
        if (name.size() > text.size() || FrontPage::DecodeEntities(text).size() > text.size()) {
            std::abort();
        }
        for (const char c : FrontPage::EncodeRpcUrl(text)) {
            if (c <= ' ' || c > '~') {
                std::abort();
            }
        }
    } catch (const Exception&) {
    }
    return 0;
}
