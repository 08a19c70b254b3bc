#include "platform/wininet/options.h"

#include <cstring>

#include "platform/text.h"
#include "platform/wininet/cookies.h"

namespace wininet {
namespace {

struct LimitRow {
    DWORD option;
    DWORD Limits::*limit;
};
constexpr LimitRow limit_rows[] = {
    {INTERNET_OPTION_CONNECT_TIMEOUT, &Limits::connect},
    {INTERNET_OPTION_SEND_TIMEOUT, &Limits::send},
    {INTERNET_OPTION_RECEIVE_TIMEOUT, &Limits::receive},
    {INTERNET_OPTION_DATA_RECEIVE_TIMEOUT, &Limits::data_receive},
};

DWORD Limits::*LimitOf(DWORD option) noexcept {
    for (const LimitRow& row : limit_rows) {
        if (row.option == option) {
            return row.limit;
        }
    }
    return nullptr;
}

struct AccountRow {
    DWORD option;
    bool proxy;
    std::string Account::*field;
};
constexpr AccountRow account_rows[] = {
    {INTERNET_OPTION_USERNAME, false, &Account::user},
    {INTERNET_OPTION_PASSWORD, false, &Account::password},
    {INTERNET_OPTION_PROXY_USERNAME, true, &Account::user},
    {INTERNET_OPTION_PROXY_PASSWORD, true, &Account::password},
};

const AccountRow* AccountRowOf(DWORD option) noexcept {
    for (const AccountRow& row : account_rows) {
        if (row.option == option) {
            return &row;
        }
    }
    return nullptr;
}

DWORD SetAccount(Object& object, const AccountRow& row, const std::string& value) {
    if (auto* request = dynamic_cast<RequestObject*>(&object)) {
        if (row.proxy) {
            request->proxy_account.*row.field = value;
            return ERROR_SUCCESS;
        }
        // An account counts for the server that asked for it, which a redirect may have changed.
        if (!request->given || request->given->origin != request->current.origin) {
            request->given = GivenAccount{{}, request->current.origin};
        }
        request->given->account.*row.field = value;
        return ERROR_SUCCESS;
    }
    if (auto* connect = dynamic_cast<ConnectObject*>(&object)) {
        const std::lock_guard guard(connect->lock);
        (row.proxy ? connect->proxy_account : connect->account).*row.field = value;
        return ERROR_SUCCESS;
    }
    return ERROR_INTERNET_INCORRECT_HANDLE_TYPE;
}

DWORD GiveText(const std::string& value, LPVOID buffer, DWORD& length) {
    const std::wstring text = WideFromUtf8(value);
    if (buffer == nullptr || length <= text.size()) {
        length = static_cast<DWORD>(text.size() + 1);
        return ERROR_INSUFFICIENT_BUFFER;
    }
    std::memcpy(buffer, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    length = static_cast<DWORD>(text.size());
    return ERROR_SUCCESS;
}

DWORD QueryAccount(const Object& object, const AccountRow& row, LPVOID buffer, DWORD& length) {
    if (row.field == &Account::password) {
        return ERROR_INTERNET_INVALID_OPTION;
    }
    if (const auto* request = dynamic_cast<const RequestObject*>(&object)) {
        return GiveText(row.proxy        ? request->proxy_account.user
                        : request->given ? request->given->account.user
                                         : "",
                        buffer, length);
    }
    return ERROR_INTERNET_INCORRECT_HANDLE_TYPE;
}

} // namespace

DWORD EndBrowserSession() {
    ForgetUnusedAccounts();
    CookieStore::Instance().EndSession();
    return ERROR_SUCCESS;
}

DWORD SetOption(Object& object, DWORD option, LPCVOID buffer, DWORD length) {
    if (DWORD Limits::*limit = LimitOf(option)) {
        DWORD value = 0;
        if (buffer == nullptr || length != sizeof value) {
            return ERROR_INTERNET_BAD_OPTION_LENGTH;
        }
        std::memcpy(&value, buffer, sizeof value);
        object.limits.*limit = value;
        return ERROR_SUCCESS;
    }
    const AccountRow* row = AccountRowOf(option);
    if (row == nullptr) {
        return option == INTERNET_OPTION_URL ? ERROR_INTERNET_OPTION_NOT_SETTABLE : ERROR_INTERNET_INVALID_OPTION;
    }
    if (buffer == nullptr && length != 0) {
        return ERROR_INVALID_PARAMETER;
    }
    std::wstring text(static_cast<const wchar_t*>(buffer), length);
    while (text.ends_with(L'\0')) {
        text.pop_back();
    }
    const auto value = CleanUtf8(text.c_str());
    return value && text.find(L'\0') == std::wstring::npos ? SetAccount(object, *row, *value) : ERROR_INVALID_PARAMETER;
}

DWORD QueryOption(const Object& object, DWORD option, LPVOID buffer, DWORD& length) {
    if (DWORD Limits::*limit = LimitOf(option)) {
        if (buffer == nullptr || length < sizeof(DWORD)) {
            length = sizeof(DWORD);
            return ERROR_INSUFFICIENT_BUFFER;
        }
        std::memcpy(buffer, &(object.limits.*limit), sizeof(DWORD));
        length = sizeof(DWORD);
        return ERROR_SUCCESS;
    }
    if (option == INTERNET_OPTION_URL) {
        const auto* request = dynamic_cast<const RequestObject*>(&object);
        return request == nullptr ? ERROR_INTERNET_INCORRECT_HANDLE_TYPE : GiveText(request->current.Text(), buffer, length);
    }
    const AccountRow* row = AccountRowOf(option);
    return row == nullptr ? ERROR_INTERNET_INVALID_OPTION : QueryAccount(object, *row, buffer, length);
}

} // namespace wininet
