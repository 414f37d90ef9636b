// Objects that a block captures are retained by its copy, as manual reference counting expects it:
// the system's runtime of blocks leaves that to others. It is linked before GNUstep's library,
// whose functions of the same names do not know today's flags.
#import <Foundation/Foundation.h>

#include <Block.h>
#include <Block_private.h>

static id objectAt(const void* place) {
    return static_cast<id>(const_cast<void*>(place));
}

void _Block_object_assign(void* destination, const void* captured, const int kind) {
    if (kind & BLOCK_FIELD_IS_BYREF)
        abort(); // nothing here shares a variable with its block
    const bool isBlock = (kind & BLOCK_FIELD_IS_BLOCK) == BLOCK_FIELD_IS_BLOCK;
    *static_cast<const void**>(destination) =
        isBlock ? _Block_copy(captured) : [objectAt(captured) retain];
}

void _Block_object_dispose(const void* captured, const int kind) {
    if ((kind & BLOCK_FIELD_IS_BLOCK) == BLOCK_FIELD_IS_BLOCK)
        _Block_release(captured);
    else
        [objectAt(captured) release];
}
