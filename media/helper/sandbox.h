// What the helper may do once it looks at files of unknown origin: compute, read the descriptor it
// was given, and answer.
#pragma once

#include <cstdint>

namespace morvane {

/// Limits the address space and the open files of this process, takes its right to write files, and
/// lets everything else on the machine go first.
void limitResources();

/// Loads lazily whatever the decoders open on first use, by decoding tiny pictures of every kind.
/// Call after startImageLibrary and before enterSandbox.
void warmUpDecoders();

/// Gives up the right to open, create, connect or run anything, for good: a system call filter that
/// knows only what decoding needs. Where the kernel can confine reading to folders, font files (which
/// the text in drawings needs) may still be read; nothing else. A kernel without system call filters
/// leaves the process with its resource limits alone.
void enterSandbox();

/// Ends this process when a request takes longer than this, in wall time or in processor time.
/// Zero disarms.
void armTimeLimit(std::uint32_t milliseconds);

}  // namespace morvane
