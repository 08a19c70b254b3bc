#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "frame/diagnostics/diagnostics.h"

// The names as the compiler at hand prints them, in every shape that a function of the module may have.

#define OWN_NAME [[maybe_unused]] KOV_FUNCTION_NAME

namespace Shapes {

std::string Free(const std::vector<int>&) {
    OWN_NAME;
    return kov_function.text;
}

struct Outer {
    Outer() {
        OWN_NAME;
        constructed = kov_function.text;
    }
    ~Outer() {
        OWN_NAME;
        *destroyed = kov_function.text;
    }
    virtual std::string Method(int) const noexcept {
        OWN_NAME;
        return kov_function.text;
    }
    static std::string Static() {
        OWN_NAME;
        return kov_function.text;
    }
    std::string operator()(int) {
        OWN_NAME;
        return kov_function.text;
    }
    std::string operator<(int) const {
        OWN_NAME;
        return kov_function.text;
    }
    operator std::string() const {
        OWN_NAME;
        return kov_function.text;
    }
    std::string InLambda() const {
        return [this]() -> std::string {
            return [](auto) -> std::string {
                OWN_NAME;
                return kov_function.text;
            }(1);
        }();
    }
    template <class T>
    std::string Generic(T) {
        OWN_NAME;
        return kov_function.text;
    }
    template <class T>
    std::string GenericLambda(T) {
        return []() -> std::string {
            OWN_NAME;
            return kov_function.text;
        }();
    }

    std::string constructed;
    std::string* destroyed = nullptr;
};

template <class T, class U>
struct Pair {
    std::string Method() {
        OWN_NAME;
        return kov_function.text;
    }
};

std::string LocalClass() {
    struct Local {
        std::string Method() {
            OWN_NAME;
            return kov_function.text;
        }
    };
    return Local().Method();
}

std::string pointer_name;
void (*ReturnsPointer(int))(char) {
    OWN_NAME;
    pointer_name = kov_function.text;
    return nullptr;
}

std::string reference_name;
const std::vector<std::function<void(int)>>& ReturnsReference() {
    OWN_NAME;
    reference_name = kov_function.text;
    static const std::vector<std::function<void(int)>> none;
    return none;
}

} // namespace Shapes

namespace {

std::string Hidden() {
    OWN_NAME;
    return kov_function.text;
}

struct HiddenClass {
    std::string Method() {
        return [this]() -> std::string {
            OWN_NAME;
            return kov_function.text;
        }();
    }
};

} // namespace

TEST(FunctionName, IsTheQualifiedNameInEveryShape) {
    std::string destroyed;
    std::string constructed;
    {
        Shapes::Outer outer;
        constructed = outer.constructed;
        outer.destroyed = &destroyed;
    }
    std::string unused;
    Shapes::Outer outer;
    outer.destroyed = &unused;
    Shapes::ReturnsPointer(1);
    Shapes::ReturnsReference();

    const struct {
        const char* expected;
        std::string actual;
    } rows[] = {
        {"Shapes::Free", Shapes::Free({})},
        {"Shapes::Outer::Outer", constructed},
        {"Shapes::Outer::~Outer", destroyed},
        {"Shapes::Outer::Method", outer.Method(1)},
        {"Shapes::Outer::Static", Shapes::Outer::Static()},
        {"Shapes::Outer::operator()", outer(1)},
        {"Shapes::Outer::operator<", outer < 1},
        {"Shapes::Outer::InLambda", outer.InLambda()},
        {"Shapes::Outer::Generic", outer.Generic(std::string())},
        {"Shapes::Outer::GenericLambda", outer.GenericLambda(1)},
        {"Shapes::Pair::Method", Shapes::Pair<int, std::vector<char>>().Method()},
        {"Shapes::LocalClass::Local::Method", Shapes::LocalClass()},
        {"Shapes::ReturnsPointer", Shapes::pointer_name},
        {"Shapes::ReturnsReference", Shapes::reference_name},
        {"`anonymous-namespace'::Hidden", Hidden()},
        {"`anonymous-namespace'::HiddenClass::Method", HiddenClass().Method()},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.actual, row.expected);
    }
    EXPECT_EQ(static_cast<std::string>(outer).find("Shapes::Outer::operator "), 0u);
}
