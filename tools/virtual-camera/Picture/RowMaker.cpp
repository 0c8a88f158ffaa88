#include "Picture/RowMaker.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace vcam {

namespace {

constexpr size_t kNoiseEntries = size_t{1} << 14;

// splitmix64's mixing function: rows and frames whose numbers are neighbours begin far apart.
uint64_t Mixed(uint64_t x) {
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

uint16_t Clamped(int value) {
    return static_cast<uint16_t>(std::clamp(value, 0, 4095));
}

} // namespace

void RowMaker::Prepare(const PictureSettings& settings) {
    if (m_tone != nullptr && settings == m_settings)
        return;
    m_settings = settings;
    m_tone = std::make_unique<const Tone>(settings);
    const uint32_t pixels = settings.binningHorizontal * settings.binningVertical;
    const double noise = 256.0 * m_tone->Noise() / std::sqrt(static_cast<double>(pixels));
    m_noise = static_cast<int>(std::min(noise, 1e6)); // beyond that all is noise anyway
    m_sharpness = settings.sharpnessEnable ? std::clamp(settings.sharpness, 0, 100) * 4096 / 400 : 0;
    if (m_noise > 0 && m_noiseTable.empty()) {
        std::mt19937 generator(20090);
        std::normal_distribution<double> normal(0.0, 256.0);
        m_noiseTable.resize(kNoiseEntries);
        for (int16_t& value : m_noiseTable)
            value = static_cast<int16_t>(std::clamp(normal(generator), -1000.0, 1000.0));
    }
}

void RowMaker::Begin(uint32_t x0, uint32_t x1, const Moment& moment) {
    m_moment = moment;
    m_x0 = x0;
    m_x1 = x1;
    m_from = x0 - std::min(x0, Reach());
    m_to = std::min(x1 + Reach(), m_settings.width);
    for (Line& line : m_lines) {
        line.y = -1;
        line.pixels.resize(m_to - m_from);
    }
}

const Rgb12* RowMaker::Row(uint32_t y) {
    if (m_sharpness == 0)
        return Toned(y);
    // The picture's border is its own neighbour.
    const Rgb12* above = Toned(y == 0 ? 0 : y - 1);
    const Rgb12* here = Toned(y);
    const Rgb12* below = Toned(std::min(y + 1, m_settings.height - 1));
    Sharpen(above, here, below);
    return m_sharp.data();
}

const Rgb12* RowMaker::Toned(uint32_t y) {
    Line& line = m_lines[y % m_lines.size()];
    if (line.y == y)
        return line.pixels.data();
    line.y = y;
    const PictureSettings& s = m_settings;
    const uint32_t row = s.offsetY + (s.reverseY ? s.height - 1 - y : y);
    const uint32_t column = s.offsetX + (s.reverseX ? s.width - m_to : m_from);
    if (s.binningHorizontal == 1 && s.binningVertical == 1)
        Straight(line, column, row);
    else
        Binned(line, column * s.binningHorizontal, row * s.binningVertical);
    if (m_noise > 0)
        AddNoise(line, y);
    if (m_noise > 0 || s.binningHorizontal != 1 || s.binningVertical != 1) {
        if (m_tone->HasFinish()) {
            for (Rgb12& pixel : line.pixels)
                pixel = m_tone->Finish(pixel);
        }
    }
    if (s.reverseX)
        std::reverse(line.pixels.begin(), line.pixels.end());
    return line.pixels.data();
}

// A frame may be made larger than the sensor on purpose: black then.
void RowMaker::ReadScene(uint32_t row, uint32_t first, uint32_t count) {
    m_sceneRow.resize(count);
    const uint32_t right = std::min(first + count, m_scene->Width());
    const uint32_t inside = row < m_scene->Height() && right > first ? right - first : 0;
    if (inside > 0)
        m_scene->Row(row, first, right, m_moment, m_sceneRow.data());
    std::fill(m_sceneRow.begin() + inside, m_sceneRow.end(), Rgb8{0, 0, 0});
}

void RowMaker::Straight(Line& line, uint32_t sensorX, uint32_t sensorY) {
    ReadScene(sensorY, sensorX, static_cast<uint32_t>(line.pixels.size()));
    const Tone& tone = *m_tone;
    const auto each = [&](auto map) {
        std::transform(m_sceneRow.begin(), m_sceneRow.end(), line.pixels.begin(), map);
    };
    if (m_noise > 0)
        each([&tone](const Rgb8& c) { return tone.Light(c); });
    else if (tone.IsSeparable())
        each([&tone](const Rgb8& c) { return tone.Separate(c); });
    else
        each([&tone](const Rgb8& c) { return tone.Whole(c); });
}

void RowMaker::Binned(Line& line, uint32_t sensorX, uint32_t sensorY) {
    const uint32_t across = m_settings.binningHorizontal;
    const uint32_t down = m_settings.binningVertical;
    const size_t count = line.pixels.size();
    m_sums.assign(3 * count, 0); // 16 components of 12 bits at most
    for (uint32_t row = 0; row < down; ++row) {
        ReadScene(sensorY + row, sensorX, static_cast<uint32_t>(count) * across);
        const Rgb8* from = m_sceneRow.data();
        for (size_t i = 0; i < count; ++i) {
            for (uint32_t column = 0; column < across; ++column) {
                const Rgb12 light = m_tone->Light(*from++);
                m_sums[3 * i] = static_cast<uint16_t>(m_sums[3 * i] + light.red);
                m_sums[3 * i + 1] = static_cast<uint16_t>(m_sums[3 * i + 1] + light.green);
                m_sums[3 * i + 2] = static_cast<uint16_t>(m_sums[3 * i + 2] + light.blue);
            }
        }
    }
    const uint32_t pixels = across * down;
    const auto mean = [pixels](uint16_t sum) { return static_cast<uint16_t>((sum + pixels / 2) / pixels); };
    for (size_t i = 0; i < count; ++i)
        line.pixels[i] = {mean(m_sums[3 * i]), mean(m_sums[3 * i + 1]), mean(m_sums[3 * i + 2])};
}

// Drawn by place and phase alone, so that a piece of a picture that is painted anew fits the rest.
void RowMaker::AddNoise(Line& line, uint32_t y) {
    const uint64_t start = Mixed(Mixed(m_moment.phase) + y);
    const uint32_t first = m_settings.reverseX ? m_settings.width - m_to : m_from;
    size_t at = start + size_t{first} * 3;
    const auto shaken = [&](uint16_t value) {
        return Clamped(value + ((m_noiseTable[at++ & (kNoiseEntries - 1)] * m_noise) >> 16));
    };
    for (Rgb12& pixel : line.pixels)
        pixel = {shaken(pixel.red), shaken(pixel.green), shaken(pixel.blue)};
}

void RowMaker::Sharpen(const Rgb12* above, const Rgb12* here, const Rgb12* below) {
    const uint32_t last = m_to - m_from - 1;
    m_sharp.resize(m_x1 - m_x0);
    const auto at = [this](uint16_t middle, uint16_t up, uint16_t down, uint16_t left, uint16_t right) {
        const int differences = 4 * middle - up - down - left - right;
        return Clamped(middle + ((differences * m_sharpness + 2048) >> 12));
    };
    for (uint32_t x = m_x0; x < m_x1; ++x) {
        const uint32_t i = x - m_from;
        const Rgb12& m = here[i];
        const Rgb12& u = above[i];
        const Rgb12& d = below[i];
        const Rgb12& l = here[i == 0 ? 0 : i - 1];
        const Rgb12& r = here[std::min(i + 1, last)];
        m_sharp[x - m_x0] = {at(m.red, u.red, d.red, l.red, r.red),
                             at(m.green, u.green, d.green, l.green, r.green),
                             at(m.blue, u.blue, d.blue, l.blue, r.blue)};
    }
}

} // namespace vcam
