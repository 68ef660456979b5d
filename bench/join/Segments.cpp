// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Segments.h"

#include "Media/Libav/FFmpegPointers.h"
#include "Media/Movie/MovieWriter.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace vantrell::bench {

namespace {

[[noreturn]] void giveUp(const std::string &what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::exit(1);
}

void drawMinute(const std::filesystem::path &path) {
    const std::string beep =
        "aevalsrc='if(lt(t,0.05),0.8*sin(2*PI*1000*t),0.05*sin(2*PI*200*t))':s=48000:d=60";
    const std::string command =
        "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=1920x1080:r=60:d=60 -f lavfi -i \"" + beep +
        "\" -f lavfi -i \"" + beep +
        "\" -map 0 -map 1 -map 2 -c:v libx264 -preset ultrafast -bf 0 -g 300 -pix_fmt yuv420p -b:v 2500k"
        " -maxrate 2600k -bufsize 2600k -c:a aac -b:a 128k '" +
        path.string() + "'";
    if (std::system(command.c_str()) != 0)
        giveUp("ffmpeg could not draw the segment");
}

TrackId addTrack(MovieWriter &writer, const AVStream &stream) {
    const AVCodecParameters &codec = *stream.codecpar;
    const std::vector<std::uint8_t> configuration(codec.extradata, codec.extradata + codec.extradata_size);
    if (codec.codec_type == AVMEDIA_TYPE_VIDEO)
        return writer.addVideoTrack({{codec.width, codec.height}, stream.time_base.den, configuration});
    return writer.addAudioTrack({.sampleRate = codec.sample_rate,
                                 .channels = codec.ch_layout.nb_channels,
                                 .decoderConfiguration = configuration});
}

/// The same samples as our recorder writes them.
void rewrite(const std::filesystem::path &from, const std::filesystem::path &to) {
    AVFormatContext *opened = nullptr;
    AVDictionary *options = nullptr;
    av_dict_set(&options, "ignore_editlist", "1", 0);
    if (avformat_open_input(&opened, from.c_str(), nullptr, &options) < 0)
        giveUp("the drawn segment cannot be read");
    av_dict_free(&options);
    const FormatInputPtr input(opened);
    auto writer = MovieWriter::create(to);
    if (!writer)
        giveUp(writer.error().message);
    std::vector<TrackEnd> ends;
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const TrackId track = addTrack(**writer, *input->streams[i]);
        ends.push_back({track, std::int64_t(segmentSeconds) * input->streams[i]->time_base.den});
    }
    const PacketPtr packet(av_packet_alloc());
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        const auto index = std::size_t(packet->stream_index);
        // Without its edits the sound begins with the coder's priming, which belongs before zero.
        const std::int64_t shift =
            input->streams[index]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO ? -1024 : 0;
        const auto appended = (*writer)->append(ends[index].track, {{packet->data, std::size_t(packet->size)},
                                                                    packet->pts + shift,
                                                                    packet->dts + shift,
                                                                    (packet->flags & AV_PKT_FLAG_KEY) != 0});
        if (!appended)
            giveUp(appended.error().message);
        av_packet_unref(packet.get());
    }
    if (const auto done = (*writer)->finish(ends); !done)
        giveUp(done.error().message);
}

} // namespace

std::vector<std::filesystem::path> makeSegments(const std::filesystem::path &folder, int count) {
    std::vector<std::filesystem::path> segments;
    for (int i = 0; i < count; ++i)
        segments.push_back(folder / ("segment" + std::to_string(i) + ".mov"));
    drawMinute(folder / "drawn.mp4");
    rewrite(folder / "drawn.mp4", segments.front());
    for (int i = 1; i < count; ++i)
        std::filesystem::copy_file(segments.front(), segments[std::size_t(i)]);
    return segments;
}

} // namespace vantrell::bench
