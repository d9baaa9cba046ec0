#pragma once

#include <filesystem>

namespace host {

/// Throws `FileError` when an audio file ends before the place that its own structure promises.
///
/// Decoders read such a file up to its end and say nothing, so that a copy cut short passes for a shorter
/// take. Knows RIFF and RIFX, AIFF and AIFC (the chunk that holds the samples must fit the file), and Ogg
/// (the last page must be marked as the last). Lengths of 0 or all ones, as streaming writers leave them,
/// promise nothing. FLAC tells its number of frames, which the reader compares with what it got.
void CheckContainer(const std::filesystem::path& inPath);

} // namespace host
