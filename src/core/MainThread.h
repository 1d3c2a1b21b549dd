#pragma once

namespace kelvane {

// Shared state belongs to the main thread; touching it from another thread is a programming error
// that stops the program at once rather than corrupting state.
void assertMainThread();
bool isMainThread();

} // namespace kelvane
