#pragma once

namespace kivo {

/**
 * Hands freed heap pages back to the system. The C library keeps what a large list of rows
 * leaves behind in its free lists, where it still counts as the process's resident memory;
 * this returns the whole free pages among them. Safe on any thread; it takes a few
 * milliseconds, so the main thread leaves it to a worker.
 */
void returnFreedHeapMemory();

/**
 * The same for workers that free large buffers again and again (decoded pictures): each worker
 * thread keeps its own heap, and what a burst of decodes freed stays there. Does nothing when
 * it last ran less than a second ago.
 */
void returnFreedHeapMemoryNowAndThen();

/**
 * Sets the C library's heap up for lists of a hundred thousand rows that a worker frees while
 * the main thread reads the next: freed blocks are merged as they are freed, on the freeing
 * thread. Otherwise they wait in its fast free lists until the next large request, which then
 * merges them all at once, on the main thread, in the middle of a reload (a fifth of it). Blocks
 * up to 256 MB come from the heap rather than fresh mappings, so that a new list reuses the pages
 * the replaced one freed. Call once, first thing.
 */
void tuneHeapForLargeLists();

} // namespace kivo
