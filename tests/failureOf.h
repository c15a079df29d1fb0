#pragma once

#include "platform/failure.h"

#include <gtest/gtest.h>

// The number of the failure that `action` raises, 0 for none.
template <class Action>
int failureOf(Action action) {
    try {
        action();
    } catch (const platform::Failure& failure) {
        EXPECT_FALSE(failure.description().empty());
        return failure.number();
    }
    return 0;
}
