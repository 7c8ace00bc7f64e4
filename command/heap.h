// Memory for the trees of large profiles.
#ifndef COMMAND_HEAP_H
#define COMMAND_HEAP_H

namespace zamofw {

// A large profile takes many megabytes for a moment. Page by page, the kernel needs as long to hand
// them out as it takes to fill them, so ask for large pages, and give nothing back before the end.
void prepareHeap();

}  // namespace zamofw

#endif
