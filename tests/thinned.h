// The generators of cases take fewer of them under the sanitizers, which make each one about ten times slower.
#pragma once

#ifdef __SANITIZE_ADDRESS__
constexpr bool thinned = true;
#else
constexpr bool thinned = false;
#endif
