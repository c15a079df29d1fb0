#pragma once

#include "base/failure.h"

#include <gtest/gtest.h>

// The number of the failure that `action` throws; 0 if it throws none.
template <class Action>
int failureOf(Action action) {
    try {
        action();
        return 0;
    } catch (const Failure& failure) {
        EXPECT_FALSE(failure.description().empty());
        return failure.number();
    }
}
