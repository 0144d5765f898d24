#include "gallery/GalleryQuestion.h"

#include "framework/win32/Window.h"

namespace gallery {

namespace {

QuestionHandler& Handler() {
    static QuestionHandler handler;
    return handler;
}

int AskWithMessageBox(UINT promptId, UINT type) {
    char text[1024] = {};
    ::LoadStringA(framework::win32::ResourceModule(), promptId, text, sizeof text);
    return ::MessageBoxA(::GetActiveWindow(), text, "Lumbrel", type);
}

}  // namespace

int AskQuestion(UINT promptId, UINT type) {
    if (Handler()) return Handler()(promptId, type);
    return AskWithMessageBox(promptId, type);
}

QuestionHandler SetQuestionHandler(QuestionHandler handler) {
    QuestionHandler previous = std::move(Handler());
    Handler() = std::move(handler);
    return previous;
}

}  // namespace gallery
