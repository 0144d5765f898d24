#include <windows.h>

#include <ole2.h>

#include <gtest/gtest.h>

#include "control/ControlModule.h"

namespace {

class OleEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(::OleInitialize(nullptr)));
        control::StartModule();
    }
    void TearDown() override { ::OleUninitialize(); }
};

const auto* const g_environment = ::testing::AddGlobalTestEnvironment(new OleEnvironment);

}  // namespace
