#pragma once

#include "base/failure.h"

#include <gtest/gtest.h>

// The failure that `action` throws; its number is 0 if it throws none.
template <class Action>
Failure failureIn(Action action) {
    try {
        action();
    } catch (const Failure& failure) {
        EXPECT_FALSE(failure.description().empty());
        return failure;
    }
    return {0, ""};
}

template <class Action>
int failureOf(Action action) {
    return failureIn(action).number();
}
