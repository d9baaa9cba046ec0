// tessaro-host script peaks.js FILE [SLOTS]: prints the peaks of each channel of a file.
var file = new host.AudioFile(args[0]);
var data = file.getPeaks(0, file.frameCount, Number(args[1] || 8));
if (data.getType() !== tessaro.WaveformData.TYPE_PEAKS) {
    throw new Error("expected peaks, got " + data.getType());
}
for (var channel = 0; channel < data.getChannelCount(); ++channel) {
    data.getChannel(channel).forEach(function (slot, index) {
        print("channel " + channel, "slot " + index, slot.min.toFixed(4), slot.max.toFixed(4));
    });
}
