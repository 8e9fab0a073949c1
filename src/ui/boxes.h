// Message boxes: the box "Error" and the question and information boxes. Callable on any thread;
// the box runs on the user-interface thread and the caller waits for the answer.
#pragma once

#include "notice/error.h"

#include <functional>
#include <optional>
#include <string>

// `hint` stands below the text, smaller.
void BOX_ShowError(WindowHandle owner, const std::string& text, const std::string& hint = {});
// The BoxAnswer of the user; ANSWER_NONE when the program ended before one was given.
int BOX_Ask(WindowHandle owner, const std::string& text, const std::string& caption,
            unsigned boxType);

// For tests: answers in place of a box; none shows the box after all. Called on the user-interface
// thread. An empty function brings the boxes back.
struct BoxRequest {
    std::string text;
    std::string caption;
    unsigned boxType = BOX_OK;
    std::string hint = {};
};
using BoxResponder = std::function<std::optional<int>(const BoxRequest&)>;
void BOX_SetResponder(BoxResponder responder);
