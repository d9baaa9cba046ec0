#include "script/classes/AudioFileObject.h"

#include <velmora/ScriptException.h>
#include <velmora/definition/ScriptObjectDefinition.h>

#include "WaveformReader.h"

namespace host {

namespace {

const velmora::definition::ScriptObjectDefinition<AudioFileObject> kDefinition("AudioFile",
                                                                               "An audio file to read from.");

} // namespace

void AudioFileObject::DefineObject(velmora::definition::ScriptObjectDefinition<AudioFileObject>& ioDefinition)
{
    using velmora::ParameterType;
    ioDefinition.AddNamespace("host");
    ioDefinition.AddConstructor(
        "Open a file.",
        [](const std::string& inPath) { return velmora::utils::CreateScriptObject<AudioFileObject>(inPath); },
        ParameterType<std::string>("path"));
    ioDefinition.AddProperty("sampleRate", "Frames a second.",
                             [](AudioFileObject& inFile) { return inFile.mReader.GetSampleRate(); });
    ioDefinition.AddProperty("channelCount", "Number of channels.",
                             [](AudioFileObject& inFile) { return inFile.mReader.GetChannelCount(); });
    ioDefinition.AddProperty("frameCount", "Length in frames.",
                             [](AudioFileObject& inFile) { return inFile.mReader.GetFrameCount(); });
    ioDefinition.AddMethod("getPeaks", "Waveform of a stretch, reduced to slots of peaks.",
                           &AudioFileObject::GetPeaks, ParameterType<unsigned>("start"),
                           ParameterType<unsigned>("frames"), ParameterType<unsigned>("slots"));
    ioDefinition.AddMethod("getSamples", "Waveform of a stretch, a slot for each frame.",
                           &AudioFileObject::GetSamples, ParameterType<unsigned>("start"),
                           ParameterType<unsigned>("frames"));
}

void AudioFileObject::CheckStretch(unsigned inStart, unsigned inFrames) const
{
    if (std::int64_t{inStart} + inFrames > mReader.GetFrameCount()) {
        throw velmora::ParameterErrorException("the stretch ends behind the end of the file");
    }
}

AudioFileObject::Data AudioFileObject::GetPeaks(unsigned inStart, unsigned inFrames, unsigned inSlots)
{
    CheckStretch(inStart, inFrames);
    if (inSlots == 0 || inSlots > inFrames) {
        throw velmora::ParameterErrorException("the number of slots lies between 1 and that of frames");
    }
    return ReadPeaks(mReader, inStart, inFrames, inSlots);
}

AudioFileObject::Data AudioFileObject::GetSamples(unsigned inStart, unsigned inFrames)
{
    CheckStretch(inStart, inFrames);
    return ReadSamples(mReader, inStart, inFrames);
}

} // namespace host
