// What a test would have seen on the screen: reported errors, asked questions and log lines, which
// any thread may cause, and the answers that it gives.
#pragma once

#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

class Reports {
public:
    using Texts = std::vector<std::string>;

    explicit Reports(int firstAnswer = ANSWER_NONE) : answer(firstAnswer) {
        ERROR_SetHandlers(
            [this](WindowHandle, const std::string& text, const std::string& hint, int) {
                note(errors, text);
                note(hints, hint);
            },
            [this](WindowHandle, const std::string& text, const std::string& caption, unsigned) {
                note(questions, caption + ": " + text);
                return answer;
            },
            RUN_SetExitCode);
        LOG_SetObserver([this](const std::string&, const std::string& text) { note(log, text); });
    }
    ~Reports() {
        LOG_SetObserver({});
        ERROR_SetHandlers({}, {}, {});
    }
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;

    // What was reported since the last call, one text a line.
    std::string take() { return take(errors, '\n'); }
    std::string take(Texts& list, char between) { return joined(takeAll(list), between); }
    static std::string joined(const Texts& texts, char between) {
        std::string all;
        for (const std::string& text : texts) {
            all += all.empty() ? text : between + text;
        }
        return all;
    }
    Texts takeAll(Texts& list) {
        const std::lock_guard lock(mutex_);
        return std::exchange(list, {});
    }
    Texts copyOf(const Texts& list) const {
        const std::lock_guard lock(mutex_);
        return list;
    }

    // Read as they stand while no other thread reports.
    Texts errors;
    Texts hints; // one an error, empty where it has none
    Texts questions;
    Texts log;
    int answer;

private:
    void note(Texts& list, const std::string& text) {
        const std::lock_guard lock(mutex_);
        list.push_back(text);
    }
    mutable std::mutex mutex_; // of the lists
};
