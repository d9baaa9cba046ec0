#pragma once

#include <memory>
#include <string>

#include <tessaro/waveform/WaveformDataObject.h>
#include <velmora/ScriptObject.h>

#include "AudioFileReader.h"

namespace host {

/// An audio file in scripts: the class "AudioFile" in the namespace "host", made from a path. Its waveform is
/// handed out as `tessaro.WaveformData`, as peaks or as samples of a stretch in frames.
class AudioFileObject : public velmora::ScriptObject
{
public:
    static void DefineObject(velmora::definition::ScriptObjectDefinition<AudioFileObject>& ioDefinition);

    explicit AudioFileObject(const std::string& inPath) : mReader(inPath) {}

private:
    using Data = std::shared_ptr<tessaro::waveform::WaveformData>;

    Data GetPeaks(unsigned inStart, unsigned inFrames, unsigned inSlots);
    Data GetSamples(unsigned inStart, unsigned inFrames);
    void CheckStretch(unsigned inStart, unsigned inFrames) const;

    AudioFileReader mReader;
};

} // namespace host
