#pragma once

/// The integer types, result codes and small records that every interface here is written in, with the published names,
/// sizes and values. Nothing in this header allocates, locks or fails.

#include <cstddef>
#include <cstdint>

#include "platform/export.h"

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using ULONG = std::uint32_t;
using INT = std::int32_t;
using LONG = std::int32_t;
using BOOL = int;
using ULONGLONG = std::uint64_t;
using LONGLONG = std::int64_t;
using DWORD_PTR = std::uintptr_t;
using UINT_PTR = std::uintptr_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;

using LPVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using HANDLE = void*;
using HMODULE = void*;
using HINSTANCE = void*;
using HWND = void*;

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;
constexpr DWORD MAX_PATH = 260;

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1));

/// Result of an operation: negative is failure.
using HRESULT = std::int32_t;

constexpr bool SUCCEEDED(HRESULT result) noexcept { return result >= 0; }
constexpr bool FAILED(HRESULT result) noexcept { return result < 0; }

/// A result code from its published unsigned spelling.
constexpr HRESULT MakeHResult(std::uint32_t code) noexcept { return static_cast<HRESULT>(code); }

/// The result code of a system error: the code itself when it is not positive, else facility 7 with its low 16 bits.
constexpr HRESULT HRESULT_FROM_WIN32(std::uint32_t error) noexcept {
    return static_cast<HRESULT>(error) <= 0 ? static_cast<HRESULT>(error) : MakeHResult((error & 0xFFFFu) | 0x80070000u);
}

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOTIMPL = MakeHResult(0x80004001);
constexpr HRESULT E_NOINTERFACE = MakeHResult(0x80004002);
constexpr HRESULT E_POINTER = MakeHResult(0x80004003);
constexpr HRESULT E_ABORT = MakeHResult(0x80004004);
constexpr HRESULT E_FAIL = MakeHResult(0x80004005);
constexpr HRESULT E_UNEXPECTED = MakeHResult(0x8000FFFF);
constexpr HRESULT E_ACCESSDENIED = MakeHResult(0x80070005);
constexpr HRESULT E_OUTOFMEMORY = MakeHResult(0x8007000E);
constexpr HRESULT E_INVALIDARG = MakeHResult(0x80070057);

/// A truth value as it crosses interfaces: all bits set is true.
using VARIANT_BOOL = std::int16_t;
constexpr VARIANT_BOOL VARIANT_TRUE = -1;
constexpr VARIANT_BOOL VARIANT_FALSE = 0;

/// 100-nanosecond units since 1601-01-01 00:00 UTC, in two halves.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

/// A moment in calendar fields; months from 1, days of the week from 0 for Sunday.
struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

struct POINT {
    LONG x;
    LONG y;
};

struct SIZE {
    LONG cx;
    LONG cy;
};

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};

union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
};
