// What a test would have seen on the screen: reported errors and asked questions, and the answers
// that it gives.
#pragma once

#include "notice/error.h"

#include <string>
#include <vector>

class Reports {
public:
    explicit Reports(int firstAnswer = ANSWER_NONE) : answer(firstAnswer) {
        ERROR_SetHandlers(
            [this](WindowHandle, const std::string& text, int) { errors.push_back(text); },
            [this](WindowHandle, const std::string& text, const std::string& caption, unsigned) {
                questions.push_back(caption + ": " + text);
                return answer;
            },
            {});
    }
    ~Reports() { ERROR_SetHandlers({}, {}, {}); }
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;

    // What was reported since the last call, one text a line.
    std::string take() {
        std::string all;
        for (const std::string& error : errors) {
            all += all.empty() ? error : '\n' + error;
        }
        errors.clear();
        return all;
    }

    std::vector<std::string> errors;
    std::vector<std::string> questions;
    int answer;
};
