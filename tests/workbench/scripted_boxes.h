#pragma once

// Answers prepared for the questions of a test. A question that nobody expected fails the test, and so does an answer that
// nobody asked for.

#include <deque>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "workbench/core/questions.h"

class ScriptedBoxes final : public Questions {
public:
    ~ScriptedBoxes() override { EXPECT_TRUE(m_expected.empty()) << m_expected.size() << " answers that nobody asked for"; }

    /// The next question has these buttons, by their keys, and gets this answer.
    void Expect(std::vector<std::wstring> buttons, BoxAnswer answer) {
        m_expected.push_back({std::move(buttons), std::move(answer)});
    }

    BoxAnswer Ask(const Box& box) override {
        asked.push_back(box);
        std::vector<std::wstring> buttons;
        for (const BoxItem& button : box.buttons) {
            buttons.push_back(button.key);
        }
        if (m_expected.empty()) {
            ADD_FAILURE() << "a question that nobody expected: " << testing::PrintToString(box.text);
            return UnansweredBox(box);
        }
        const Expected expected = m_expected.front();
        m_expected.pop_front();
        EXPECT_EQ(buttons, expected.buttons);
        return expected.answer;
    }

    std::vector<Box> asked;

private:
    struct Expected {
        std::vector<std::wstring> buttons;
        BoxAnswer answer;
    };
    std::deque<Expected> m_expected;
};
