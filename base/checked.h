// Arithmetic and array access that raise a run-time failure instead of overflowing or leaving the array.
#pragma once

#include "base/failure.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

// Converts `value` to a narrower type; fails with failureNumber::overflow when it does not fit.
template <class To, class From>
To narrow(From value) {
    static_assert(std::is_integral_v<To> && std::is_signed_v<From> && sizeof(To) <= sizeof(From));
    if (value < From{std::numeric_limits<To>::min()} || value > From{std::numeric_limits<To>::max()}) {
        throw Failure(failureNumber::overflow, "Overflow");
    }
    return static_cast<To>(value);
}

// Returns element `index` of a vector or array; fails with failureNumber::outOfRange when there is none.
template <class Array>
auto& at(Array& array, std::int64_t index) {
    if (index < 0 || index >= static_cast<std::int64_t>(array.size())) {
        throw Failure(failureNumber::outOfRange, "Subscript out of range");
    }
    return array[static_cast<std::size_t>(index)];
}
