#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "frame/diagnostics/diagnostics.h"

// The names as the compiler at hand prints them, in every shape that a function of the module may have.

#define PUT_OWN_NAME(target)                                                                                                     \
    KOV_FUNCTION_NAME;                                                                                                           \
    (target) = kov_function.text
#define RETURN_OWN_NAME                                                                                                          \
    KOV_FUNCTION_NAME;                                                                                                           \
    return std::string(kov_function.text)

namespace Shapes {

std::string Free(const std::vector<int>&) { RETURN_OWN_NAME; }

struct Outer {
    Outer() { PUT_OWN_NAME(constructed); }
    ~Outer() { PUT_OWN_NAME(*destroyed); }
    virtual std::string Method(int) const noexcept { RETURN_OWN_NAME; }
    static std::string Static() { RETURN_OWN_NAME; }
    std::string operator()(int) { RETURN_OWN_NAME; }
    std::string operator<(int) const { RETURN_OWN_NAME; }
    operator std::string() const { RETURN_OWN_NAME; }
    std::string InLambda() const {
        return [this]() { return [](auto) { RETURN_OWN_NAME; }(1); }();
    }
    template <class T>
    std::string Generic(T) {
        RETURN_OWN_NAME;
    }
    template <class T>
    std::string GenericLambda(T) {
        return []() { RETURN_OWN_NAME; }();
    }

    std::string constructed;
    std::string* destroyed = nullptr;
};

template <class T, class U>
struct Pair {
    std::string Method() { RETURN_OWN_NAME; }
};

std::string LocalClass() {
    struct Local {
        std::string Method() { RETURN_OWN_NAME; }
    };
    return Local().Method();
}

std::string pointer_name;
void (*ReturnsPointer(int))(char) {
    PUT_OWN_NAME(pointer_name);
    return nullptr;
}

std::string reference_name;
const std::vector<std::function<void(int)>>& ReturnsReference() {
    PUT_OWN_NAME(reference_name);
    static const std::vector<std::function<void(int)>> none;
    return none;
}

} // namespace Shapes

namespace {

std::string Hidden() { RETURN_OWN_NAME; }

struct HiddenClass {
    std::string Method() {
        return [this]() { RETURN_OWN_NAME; }();
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
