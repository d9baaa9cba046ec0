#pragma once

#include <filesystem>
#include <memory>

#include <ombrel/async/Generator.h>
#include <tessaro/Export.h>

namespace tessaro {

class AudioBuffer;

} // namespace tessaro

namespace tessaro::debug {

/// Looks into a stream of buffers while developing: a generator that passes on what `inSource` gives, the
/// same buffers in the same order, and writes each to a WAV file of 32-bit floats on its way. The first
/// buffer sets the number of channels; the file is whole after each buffer. A buffer that cannot be written
/// is passed on all the same. The sample rate in Hz. [control]
TESSARO_EXPORT std::shared_ptr<ombrel::async::Generator<std::shared_ptr<AudioBuffer>>>
DumpAudioBufferGeneratorToFile(
    std::shared_ptr<ombrel::async::Generator<std::shared_ptr<AudioBuffer>>> inSource, unsigned inSampleRate,
    const std::filesystem::path& inFile);

} // namespace tessaro::debug
