// The hash's inner loop for processors that have AVX2. Compiled with that instruction set, so it
// must include nothing whose inline functions other files might end up calling.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace local {

// `state` is an XXH3_state_t, whose layout is the same for every instruction set.
void updateWithAvx2(void* state, const uint8_t* bytes, size_t size);

} // namespace local
