#pragma once

/// Keeps what the program has in memory close to what it uses.
namespace Corvella::ResidentMemory {

/// Gives back what is free, and the pages of code and constants, those of libraries too: most were
/// needed for starting alone. What is needed again comes back from the page cache as it is touched.
/// From then on large blocks, such as those of decoded pictures, are given back as they are freed.
/// Takes a few milliseconds; any thread.
void release();

}  // namespace Corvella::ResidentMemory
