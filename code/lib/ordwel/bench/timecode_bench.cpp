// SPDX-License-Identifier: MIT
// Timecode and timestamp work beside FFmpeg's libavutil doing the same job in the same run:
// stepping a 29.97 drop-frame counter and packing the label, rendering the label as text,
// turning a 90 kHz time into a label, NTP fixed point, the SMPTE time address of each label and
// exact rescaling.

#include <ordwel/es.h>
#include <ordwel/rescale.h>
#include <ordwel/smpte.h>
#include <ordwel/timecode.h>
#include <ordwel/timestamp.h>

#include <cstdint>
#include <string>
#include <vector>

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

// The SMPTE word of each label of a 29.97 drop-frame day in turn, the labels stepped beforehand
// so that only the packing is measured.
std::vector<timecode> const &day_of_labels()
{
    static std::vector<timecode> const l_labels = [] {
        std::vector<timecode> l_result;
        timecode l_value(timecode::mode_29_97);
        for (int l_frame = 0; l_frame < k_frames_per_day; ++l_frame, ++l_value) {
            l_result.push_back(l_value);
        }
        return l_result;
    }();
    return l_labels;
}

void ordwel_smpte_word(benchmark::State &a_state)
{
    std::vector<timecode> const &l_labels = day_of_labels();
    std::size_t l_index = 0;
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(smpte_word_with_timecode(l_labels[l_index]));
        l_index = l_index + 1 == l_labels.size() ? 0 : l_index + 1;
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(ordwel_smpte_word);

// Counts of all sizes and signs, with factors whose products pass 64 bits.
struct rescale_case {
    std::int64_t count;
    std::int64_t numer;
    std::int64_t denom;
};

std::vector<rescale_case> const &rescale_cases()
{
    static std::vector<rescale_case> const l_cases = [] {
        std::vector<rescale_case> l_result;
        std::uint64_t l_state = 0x9e3779b97f4a7c15ull;
        auto const l_next = [&l_state] {
            l_state = l_state * 6364136223846793005ull + 1442695040888963407ull;
            return l_state;
        };
        std::int64_t const l_rates[] = {90000, 48000, 44100, 30000, 1001, 1000000000, 27000000};
        while (l_result.size() < 4096) {
            std::int64_t const l_count =
                static_cast<std::int64_t>(l_next() >> (l_next() % 40 + 1)) * ((l_next() & 1u) != 0 ? -1 : 1);
            rescale_case const l_case{l_count, l_rates[l_next() % 7], l_rates[l_next() % 7]};
            // Only results that fit, where both libraries give a number.
            try {
                (void)rescaled(l_case.count,
                               fraction<unsigned long long>(static_cast<unsigned long long>(l_case.numer),
                                                            static_cast<unsigned long long>(l_case.denom)),
                               rounding::nearest);
                l_result.push_back(l_case);
            } catch (es::oflow const &) {
            }
        }
        return l_result;
    }();
    return l_cases;
}

void ordwel_rescale(benchmark::State &a_state)
{
    std::vector<rescale_case> const &l_cases = rescale_cases();
    std::size_t l_index = 0;
    for (auto _ : a_state) {
        rescale_case const &l_case = l_cases[l_index];
        benchmark::DoNotOptimize(rescaled(l_case.count,
                                          fraction<unsigned long long>(static_cast<unsigned long long>(l_case.numer),
                                                                       static_cast<unsigned long long>(l_case.denom)),
                                          rounding::nearest));
        l_index = (l_index + 1) % l_cases.size();
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(ordwel_rescale);

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

void libavutil_smpte_word(benchmark::State &a_state)
{
    std::vector<timecode> const &l_labels = day_of_labels();
    std::size_t l_index = 0;
    for (auto _ : a_state) {
        timecode const &l_value = l_labels[l_index];
        benchmark::DoNotOptimize(av_timecode_get_smpte(AVRational{30000, 1001}, 1, int(l_value.hour()),
                                                       int(l_value.minute()), int(l_value.second()),
                                                       int(l_value.frame())));
        l_index = l_index + 1 == l_labels.size() ? 0 : l_index + 1;
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(libavutil_smpte_word);

void libavutil_rescale(benchmark::State &a_state)
{
    std::vector<rescale_case> const &l_cases = rescale_cases();
    std::size_t l_index = 0;
    for (auto _ : a_state) {
        rescale_case const &l_case = l_cases[l_index];
        benchmark::DoNotOptimize(av_rescale_rnd(l_case.count, l_case.numer, l_case.denom, AV_ROUND_NEAR_INF));
        l_index = (l_index + 1) % l_cases.size();
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(libavutil_rescale);

#endif

} // namespace
