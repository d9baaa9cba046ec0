#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <tessaro/Export.h>
#include <tessaro/waveform/WaveformData.h>
#include <velmora/ScriptCastInterface.h>
#include <velmora/ScriptObject.h>

namespace tessaro::waveform {

/// What scripts see of waveform data: the class "WaveformData" in the namespace "tessaro".
///
///     data.getChannelCount()                      unsigned
///     data.getType()                              TYPE_PEAKS or TYPE_SAMPLES
///     data.getChannel(index)                      [{min: -0.5, max: 0.25}, ...] or [{sample: 0.1}, ...]
///     TYPE_NONE, TYPE_SAMPLES, TYPE_PEAKS         constants of the class
///
/// Scripts are handed objects, they don't make any. The program wraps a data pointer by
/// `velmora::utility::TransformObjectIntoScriptingObject`, or declares methods that take or return a
/// `std::shared_ptr<WaveformData>`, which then crosses by itself. One that stands for a null pointer has no
/// channels and no slots.
///
/// One thread at a time, as the data. [control]
class TESSARO_EXPORT WaveformDataObject : public velmora::ScriptObject,
                                          public velmora::ScriptCastInterface<std::shared_ptr<WaveformData>>
{
public:
    static void DefineObject(velmora::definition::ScriptObjectDefinition<WaveformDataObject>& ioDefinition);

    /// Stands for nothing until `Initialize`.
    WaveformDataObject();
    ~WaveformDataObject() override;

    void Initialize(const std::shared_ptr<WaveformData>& inData);

    /// Hands out what `Initialize` was given, a null pointer, too. Always true.
    [[nodiscard]] bool CastTo(std::shared_ptr<WaveformData>& outData) const override;

private:
    [[nodiscard]] unsigned GetChannelCount() const;
    [[nodiscard]] std::vector<boost::intrusive_ptr<velmora::AnonObject>> GetChannel(unsigned inIndex) const;
    [[nodiscard]] std::string GetType() const;

    std::shared_ptr<WaveformData> mData;
};

} // namespace tessaro::waveform

template <>
struct velmora::utility::ScriptingObjectOf<std::shared_ptr<tessaro::waveform::WaveformData>>
{
    using type = tessaro::waveform::WaveformDataObject;
};
