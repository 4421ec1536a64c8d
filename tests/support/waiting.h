#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace MdToolsTest {

// Waits until `condition` holds, asking again and again. The failure names `what` was waited for:
//     ASSERT_TRUE(waitUntil("the receiver runs", [] { return connect(); }));
// It comes after a minute, or as soon as `mayStill` says that the condition cannot come true any
// more (a program that has died).
::testing::AssertionResult waitUntil(const std::string& what,
                                     const std::function<bool()>& condition,
                                     const std::function<bool()>& mayStill = {});

}
