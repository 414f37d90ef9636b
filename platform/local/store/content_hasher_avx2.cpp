#include "platform/local/store/content_hasher_avx2.h"

#ifdef __AVX2__

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace local {

void updateWithAvx2(void* state, const uint8_t* bytes, size_t size) {
    XXH3_128bits_update(static_cast<XXH3_state_t*>(state), bytes, size);
}

} // namespace local

#endif
