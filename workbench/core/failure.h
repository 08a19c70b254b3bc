#pragma once

#include <string>

#include "platform/types.h"
#include "workbench/core/errors.h"
#include "workbench/core/value_objects.h"

/// An operation that could not be done, with the words for it. Ends a command.
struct Failure {
    HRESULT result;
    std::wstring message;
};

/// Runs an operation of the module that takes `out_error_details`, and throws `Failure` with what it says when it fails:
///
///     Checked([&](KOV::IString* details) { return provider->Delete(name, details, cancel); });
template <class Operation>
HRESULT Checked(Operation&& operation) {
    const ComPtr<StringObject> details = MakeObject<StringObject>();
    const HRESULT result = operation(static_cast<KOV::IString*>(details.Get()));
    if (FAILED(result)) {
        throw Failure{result, FailureText(result, details)};
    }
    return result;
}

/// The same for an operation that gives no words of its own.
inline void Check(HRESULT result) {
    if (FAILED(result)) {
        throw Failure{result, FailureText(result, nullptr)};
    }
}
