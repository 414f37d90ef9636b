// Copying of blocks, with captured objects retained, as manual reference counting expects it. The
// GNUstep library has functions of the same names that do not know today's flags: these must be in
// the executable, whose symbols win.
#import <Foundation/Foundation.h>

#include <stdatomic.h>
#include <stdlib.h>
#include <string.h>

enum {
    onHeap = 1 << 24,
    hasHelpers = 1 << 25,
    isGlobal = 1 << 28,
    countMask = 0xfffe,
    oneReference = 2,
};

enum { fieldObject = 3, fieldBlock = 7, fieldByref = 8, fieldWeak = 16 };

struct Descriptor {
    unsigned long reserved;
    unsigned long size;
    void (*copy)(void*, const void*);
    void (*dispose)(const void*);
};

struct Block {
    void* isa;
    atomic_int flags;
    int reserved;
    void (*invoke)(void);
    struct Descriptor* descriptor;
};

void* _NSConcreteStackBlock[32];
void* _NSConcreteGlobalBlock[32];
void* _NSConcreteMallocBlock[32];

// Answers whether that was the last reference.
static bool releaseOne(atomic_int* flags) {
    return (atomic_fetch_sub(flags, oneReference) & countMask) == oneReference;
}

void* _Block_copy(const void* argument) {
    struct Block* const block = (struct Block*)argument;
    if (!block || (block->flags & isGlobal))
        return block;
    if (block->flags & onHeap) {
        atomic_fetch_add(&block->flags, oneReference);
        return block;
    }
    struct Block* const heap = malloc(block->descriptor->size);
    memcpy(heap, block, block->descriptor->size);
    heap->isa = _NSConcreteMallocBlock;
    atomic_store(&heap->flags, (block->flags & ~countMask) | onHeap | oneReference);
    if (heap->flags & hasHelpers)
        heap->descriptor->copy(heap, block);
    return heap;
}

void _Block_release(const void* argument) {
    struct Block* const block = (struct Block*)argument;
    if (!block || (block->flags & isGlobal) || !(block->flags & onHeap))
        return;
    if (!releaseOne(&block->flags))
        return;
    if (block->flags & hasHelpers)
        block->descriptor->dispose(block);
    free(block);
}

void _Block_object_assign(void* destination, const void* object, const int kind) {
    void* value = (void*)object;
    switch (kind & ~fieldWeak) {
    case fieldObject:
        value = [(id)object retain];
        break;
    case fieldBlock:
        value = _Block_copy(object);
        break;
    case fieldByref:
        abort(); // nothing here shares a variable with its block
    }
    *(void**)destination = value;
}

void _Block_object_dispose(const void* object, const int kind) {
    switch (kind & ~fieldWeak) {
    case fieldObject:
        [(id)object release];
        break;
    case fieldBlock:
        _Block_release(object);
        break;
    }
}
