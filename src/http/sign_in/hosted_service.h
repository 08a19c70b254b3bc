#pragma once

/// Where the hosted service signs its users in and out, over https. Trials reach their own server under this name by pointing it
/// at another address.
constexpr wchar_t hosted_sign_in_host[] = L"login.hosted.example";
