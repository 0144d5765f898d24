// Message-sequence checks in the manner of Wine's conformance tests: windows
// under test record what they receive into a sequence; a test compares it
// with an expected table and, on a mismatch, prints both sequences whole.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace testsupport {

struct MessageRecord {
    UINT message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
    const char* who = "";  // which recorder saw it
};

// What a test expects at one position: the message, and optionally its
// parameters. Kinds of check: wParam and lParam are compared only when asked.
struct ExpectedMessage {
    UINT message;
    enum Check { kMessage = 0, kWParam = 1, kLParam = 2, kBoth = 3 } check = kMessage;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
    // An optional message may be absent from the recorded sequence.
    bool optional = false;
};

class MessageSequence {
public:
    void Add(const MessageRecord& record) { records_.push_back(record); }
    void Clear() { records_.clear(); }
    const std::vector<MessageRecord>& Records() const { return records_; }

    // Only the messages for which `keep` answers true.
    template <typename Keep>
    MessageSequence Filtered(Keep keep) const {
        MessageSequence out;
        for (const auto& record : records_)
            if (keep(record)) out.Add(record);
        return out;
    }

    // Compares with `expected` in order; on a mismatch, fails the test with
    // both sequences printed.
    ::testing::AssertionResult Matches(const std::vector<ExpectedMessage>& expected) const {
        size_t r = 0;
        bool ok = true;
        for (const auto& want : expected) {
            if (r < records_.size() && Accepts(want, records_[r])) {
                ++r;
                continue;
            }
            if (want.optional) continue;
            ok = false;
            break;
        }
        if (ok && r == records_.size()) return ::testing::AssertionSuccess();
        std::string text = "message sequence differs\nexpected:\n";
        for (const auto& want : expected)
            text += "  " + Describe(want.message, want.wParam, want.lParam, want.check, want.optional) + "\n";
        text += "recorded:\n";
        for (const auto& got : records_)
            text += "  " + Describe(got.message, got.wParam, got.lParam, ExpectedMessage::kBoth, false) +
                    "  [" + got.who + "]\n";
        return ::testing::AssertionFailure() << text;
    }

private:
    static bool Accepts(const ExpectedMessage& want, const MessageRecord& got) {
        if (want.message != got.message) return false;
        if ((want.check & ExpectedMessage::kWParam) && want.wParam != got.wParam) return false;
        if ((want.check & ExpectedMessage::kLParam) && want.lParam != got.lParam) return false;
        return true;
    }
    static std::string Describe(UINT message, WPARAM wParam, LPARAM lParam, int check, bool optional) {
        char text[128];
        std::snprintf(text, sizeof text, "0x%04X%s%s", message, optional ? " (optional)" : "", "");
        std::string out = text;
        if (check & ExpectedMessage::kWParam) {
            std::snprintf(text, sizeof text, " wParam=0x%llX", static_cast<unsigned long long>(wParam));
            out += text;
        }
        if (check & ExpectedMessage::kLParam) {
            std::snprintf(text, sizeof text, " lParam=0x%llX", static_cast<unsigned long long>(lParam));
            out += text;
        }
        return out;
    }

    std::vector<MessageRecord> records_;
};

}  // namespace testsupport
