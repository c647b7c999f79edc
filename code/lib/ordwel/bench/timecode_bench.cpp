// SPDX-License-Identifier: MIT
// Timecode and timestamp work beside FFmpeg's libavutil doing the same job in the same run:
// stepping a 29.97 drop-frame counter and packing the label, rendering the label as text,
// turning a 90 kHz time into a label, and NTP fixed point.

#include <ordwel/timecode.h>
#include <ordwel/timestamp.h>

#include <string>

#include <benchmark/benchmark.h>

#if defined(ORDWEL_HAVE_LIBAVUTIL)
extern "C" {
#include <libavutil/mathematics.h>
#include <libavutil/timecode.h>
}
#endif

namespace {

using namespace ordwel;

// Frames in a day at 29.97 drop-frame: the counters start over there.
int const k_frames_per_day = 2589408;

void ordwel_step_and_pack(benchmark::State &a_state)
{
    timecode l_value(timecode::mode_29_97);
    unsigned int l_frames = 0;
    for (auto _ : a_state) {
        ++l_value;
        benchmark::DoNotOptimize(l_value.as_quicktime_tmcd());
        if (++l_frames == k_frames_per_day) {
            l_value = timecode(timecode::mode_29_97);
            l_frames = 0;
        }
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(ordwel_step_and_pack);

void ordwel_step_and_text(benchmark::State &a_state)
{
    timecode l_value(timecode::mode_29_97);
    unsigned int l_frames = 0;
    for (auto _ : a_state) {
        ++l_value;
        std::string l_text = string_with_timecode(l_value, true);
        benchmark::DoNotOptimize(l_text.data());
        if (++l_frames == k_frames_per_day) {
            l_value = timecode(timecode::mode_29_97);
            l_frames = 0;
        }
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(ordwel_step_and_text);

void ordwel_label_from_90khz(benchmark::State &a_state)
{
    unsigned long long l_ticks = 0;
    for (auto _ : a_state) {
        timecode const l_value = timecode_with_timestamp(timecode::mode_29_97, timestamp(l_ticks, 90000), 1);
        benchmark::DoNotOptimize(l_value.as_quicktime_tmcd());
        l_ticks = (l_ticks + 3003) % (90000ull * 86000);
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(ordwel_label_from_90khz);

void ordwel_ntptime(benchmark::State &a_state)
{
    unsigned long long l_ticks = 123456789;
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(timestamp(l_ticks, 90000).as_ntptime());
        l_ticks += 3003;
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(ordwel_ntptime);

#if defined(ORDWEL_HAVE_LIBAVUTIL)

AVTimecode make_av_timecode()
{
    AVTimecode l_value{};
    av_timecode_init(&l_value, AVRational{30000, 1001}, AV_TIMECODE_FLAG_DROPFRAME, 0, nullptr);
    return l_value;
}

void libavutil_step_and_pack(benchmark::State &a_state)
{
    AVTimecode const l_value = make_av_timecode();
    int l_frame = 0;
    for (auto _ : a_state) {
        ++l_frame;
        benchmark::DoNotOptimize(av_timecode_get_smpte_from_framenum(&l_value, l_frame));
        if (l_frame == k_frames_per_day) {
            l_frame = 0;
        }
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(libavutil_step_and_pack);

void libavutil_step_and_text(benchmark::State &a_state)
{
    AVTimecode const l_value = make_av_timecode();
    int l_frame = 0;
    for (auto _ : a_state) {
        ++l_frame;
        // The caller's std::string, as ordwel gives one.
        char l_buffer[AV_TIMECODE_STR_SIZE];
        std::string l_text = av_timecode_make_string(&l_value, l_buffer, l_frame);
        benchmark::DoNotOptimize(l_text.data());
        if (l_frame == k_frames_per_day) {
            l_frame = 0;
        }
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(libavutil_step_and_text);

void libavutil_label_from_90khz(benchmark::State &a_state)
{
    AVTimecode const l_value = make_av_timecode();
    long long l_ticks = 0;
    for (auto _ : a_state) {
        // The nominal 30 frames a second, as timecode_with_timestamp counts.
        int const l_frame = static_cast<int>(av_rescale(l_ticks, 30, 90000));
        benchmark::DoNotOptimize(av_timecode_get_smpte_from_framenum(&l_value, l_frame));
        l_ticks = (l_ticks + 3003) % (90000ll * 86000);
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(libavutil_label_from_90khz);

void libavutil_ntptime(benchmark::State &a_state)
{
    long long l_ticks = 123456789;
    for (auto _ : a_state) {
        long long const l_seconds = l_ticks / 90000;
        long long const l_fraction = av_rescale_rnd(l_ticks % 90000, 1ll << 32, 90000, AV_ROUND_NEAR_INF);
        benchmark::DoNotOptimize(static_cast<unsigned long long>(l_seconds) << 32 |
                                 static_cast<unsigned long long>(l_fraction));
        l_ticks += 3003;
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(libavutil_ntptime);

#endif

} // namespace
