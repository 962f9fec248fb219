#pragma once

/// Keeps what the program has in memory close to what it uses.
namespace Corvella::ResidentMemory {

/// Has all threads share a few of the allocator's pools, and large blocks, such as those of decoded
/// pictures, go back to the kernel as they are freed. Called once, before any thread is started.
void economise();

/// Gives back what is free, and the pages of code and constants, those of libraries too: most were
/// needed for starting alone. What is needed again comes back from the page cache as it is touched.
/// Takes a few milliseconds; any thread.
void release();

}  // namespace Corvella::ResidentMemory
