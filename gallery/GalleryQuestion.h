// The one question the gallery puts to the user: a yes-or-no message box
// whose text is a string resource. The answering function is replaceable, so
// that tests can answer in the user's place.
#pragma once

#include <windows.h>

#include <functional>

namespace gallery {

// Answers the question of string resource `promptId` asked with message box
// `type`; returns the button chosen (IDYES, IDNO, ...).
using QuestionHandler = std::function<int(UINT promptId, UINT type)>;

// Asks through the current handler. The default shows a message box owned by
// the active window, with the string's text (empty when the resource has no
// such string).
int AskQuestion(UINT promptId, UINT type);

// Installs `handler` (an empty one restores the default) and returns the one
// it replaces.
QuestionHandler SetQuestionHandler(QuestionHandler handler);

class ScopedQuestionHandler {
public:
    explicit ScopedQuestionHandler(QuestionHandler handler)
        : previous_(SetQuestionHandler(std::move(handler))) {}
    ~ScopedQuestionHandler() { SetQuestionHandler(std::move(previous_)); }
    ScopedQuestionHandler(const ScopedQuestionHandler&) = delete;
    ScopedQuestionHandler& operator=(const ScopedQuestionHandler&) = delete;

private:
    QuestionHandler previous_;
};

}  // namespace gallery
