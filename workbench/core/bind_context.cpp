#include "platform/bstr.h"
#include "workbench/core/errors.h"
#include "workbench/core/extensions.h"

namespace {

std::wstring TextOrEmpty(LPCWSTR text) { return text != nullptr ? text : L""; }

class BindContext final : public cCoClassUnknownT<KOV::IAFS_BindContext> {
public:
    explicit BindContext(AccountPrompt* prompt) : m_prompt(prompt) {}

    HRESULT OnGetUserAccount(IUnknown*, LPWSTR host, LPWSTR status_text, BSTR user, BSTR password, BSTR* out_user,
                             BSTR* out_password, IUnknown*, DWORD flags) override {
        if (out_user == nullptr || out_password == nullptr) {
            return E_POINTER;
        }
        return AtBorder(nullptr, [&] {
            // The results may stand in the very variables that the current values came from, so these are read first.
            const AccountDemand demand{TextOrEmpty(host), TextOrEmpty(status_text), TextOrEmpty(user), TextOrEmpty(password)};
            if ((flags & KOV::AFS_BindContext_NoUI) != 0) {
                *out_user = nullptr;
                *out_password = nullptr;
                return S_OK;
            }
            const auto answer = m_prompt != nullptr ? m_prompt->Ask(demand) : std::nullopt;
            if (!answer) {
                return UserCanceled;
            }
            Bstr new_user{std::wstring_view(answer->user)};
            Bstr new_password{std::wstring_view(answer->password)};
            if (new_user.m_str == nullptr || new_password.m_str == nullptr) {
                return E_OUTOFMEMORY;
            }
            *out_user = new_user.Detach();
            *out_password = new_password.Detach();
            return S_OK;
        });
    }

private:
    AccountPrompt* const m_prompt;
};

} // namespace

ComPtr<KOV::IAFS_BindContext> MakeBindContext(AccountPrompt* prompt) { return MakeObject<BindContext>(prompt); }
