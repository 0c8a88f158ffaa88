#include "Picture/RowMaker.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace vcam {

namespace {

constexpr uint32_t kMostBinning = 4; // sums of 16 components of 12 bits fit into 16 bits
constexpr size_t kNoiseEntries = size_t{1} << 14;

// splitmix64's mixing function: rows and frames whose numbers are neighbours begin far apart.
uint64_t Mixed(uint64_t x) {
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

int16_t Clamped(int value) {
    return static_cast<int16_t>(std::clamp(value, 0, 4095));
}

constexpr uint8_t Rgb8::*kScene[] = {&Rgb8::red, &Rgb8::green, &Rgb8::blue};

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
    if (m_noise > 0)
        MakeNoise();
}

void RowMaker::MakeNoise() {
    if (m_noiseUnits.empty()) {
        std::mt19937 generator(20090);
        std::normal_distribution<double> normal(0.0, 256.0);
        m_noiseUnits.resize(kNoiseEntries);
        for (int16_t& value : m_noiseUnits)
            value = static_cast<int16_t>(std::clamp(normal(generator), -1000.0, 1000.0));
    }
    m_noiseSteps.resize(kNoiseEntries);
    for (size_t i = 0; i < kNoiseEntries; ++i)
        m_noiseSteps[i] = static_cast<int16_t>(std::clamp((m_noiseUnits[i] * m_noise) >> 16, -4095, 4095));
}

bool RowMaker::IsPlain() const {
    return !DependsOnPlace() && !m_tone->HasMatrix() && m_settings.binningHorizontal == 1 &&
           m_settings.binningVertical == 1;
}

void RowMaker::Begin(uint32_t x0, uint32_t x1, const Moment& moment) {
    m_moment = moment;
    m_x0 = x0;
    m_x1 = x1;
    m_from = x0 - std::min(x0, Reach());
    m_to = std::min(x1 + Reach(), m_settings.width);
    m_row.resize(x1 - x0);
    for (Line& line : m_lines) {
        line.y = -1;
        for (Plane& plane : line.planes)
            plane.resize(m_to - m_from);
    }
}

const Rgb12* RowMaker::Row(uint32_t y) {
    if (IsPlain()) {
        PlainRow(y);
    } else if (m_sharpness == 0) {
        Interleave(Toned(y).planes);
    } else {
        // The picture's border is its own neighbour.
        const Line& above = Toned(y == 0 ? 0 : y - 1);
        const Line& here = Toned(y);
        Sharpen(above, here, Toned(std::min(y + 1, m_settings.height - 1)));
        Interleave(m_sharp);
    }
    return m_row.data();
}

// Where a row begins, in pixels of the region after binning; to the right of it lie m_to - m_from pixels.
std::pair<uint32_t, uint32_t> RowMaker::OnSensor(uint32_t y) const {
    const PictureSettings& s = m_settings;
    return {s.offsetX + (s.reverseX ? s.width - m_to : m_from),
            s.offsetY + (s.reverseY ? s.height - 1 - y : y)};
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

void RowMaker::PlainRow(uint32_t y) {
    const auto [x, row] = OnSensor(y);
    ReadScene(row, x, m_to - m_from);
    if (m_settings.reverseX)
        std::reverse(m_sceneRow.begin(), m_sceneRow.end());
    const auto& red = m_tone->Both(0);
    const auto& green = m_tone->Both(1);
    const auto& blue = m_tone->Both(2);
    for (size_t i = 0; i < m_row.size(); ++i) {
        const Rgb8& c = m_sceneRow[i];
        m_row[i] = {red[c.red], green[c.green], blue[c.blue]};
    }
}

const RowMaker::Line& RowMaker::Toned(uint32_t y) {
    Line& line = m_lines[y % m_lines.size()];
    if (line.y == y)
        return line;
    line.y = y;
    const PictureSettings& s = m_settings;
    const auto [x, row] = OnSensor(y);
    if (s.binningHorizontal == 1 && s.binningVertical == 1)
        Straight(line, x, row);
    else
        Binned(line, x * s.binningHorizontal, row * s.binningVertical);
    if (m_noise > 0)
        AddNoise(line, y);
    Finish(line);
    if (s.reverseX) {
        for (Plane& plane : line.planes)
            std::reverse(plane.begin(), plane.end());
    }
    return line;
}

void RowMaker::Straight(Line& line, uint32_t sensorX, uint32_t sensorY) {
    ReadScene(sensorY, sensorX, m_to - m_from);
    for (size_t c = 0; c < 3; ++c) {
        const auto& light = m_tone->Light(c);
        int16_t* to = line.planes[c].data();
        for (size_t i = 0; i < m_sceneRow.size(); ++i)
            to[i] = static_cast<int16_t>(light[m_sceneRow[i].*kScene[c]]);
    }
}

void RowMaker::Binned(Line& line, uint32_t sensorX, uint32_t sensorY) {
    const uint32_t across = std::clamp(m_settings.binningHorizontal, 1u, kMostBinning);
    const uint32_t down = std::clamp(m_settings.binningVertical, 1u, kMostBinning);
    const size_t count = m_to - m_from;
    const uint32_t pixels = across * down;
    for (Plane& plane : line.planes)
        std::fill(plane.begin(), plane.end(), int16_t{0});
    for (uint32_t row = 0; row < down; ++row) {
        ReadScene(sensorY + row, sensorX, static_cast<uint32_t>(count) * across);
        for (size_t c = 0; c < 3; ++c) {
            const auto& light = m_tone->Light(c);
            const Rgb8* from = m_sceneRow.data();
            int16_t* sums = line.planes[c].data(); // with the bits of a uint16_t
            for (size_t i = 0; i < count; ++i) {
                uint32_t sum = static_cast<uint16_t>(sums[i]);
                for (uint32_t column = 0; column < across; ++column)
                    sum += light[(from++)->*kScene[c]];
                sums[i] = static_cast<int16_t>(static_cast<uint16_t>(sum));
            }
        }
    }
    for (Plane& plane : line.planes) {
        for (int16_t& value : plane)
            value = static_cast<int16_t>((static_cast<uint16_t>(value) + pixels / 2) / pixels);
    }
}

// Drawn by place and phase alone, so that a piece of a picture that is painted anew fits the rest.
void RowMaker::AddNoise(Line& line, uint32_t y) {
    const uint32_t first = m_settings.reverseX ? m_settings.width - m_to : m_from;
    const size_t count = m_to - m_from;
    for (size_t c = 0; c < 3; ++c) {
        size_t at = Mixed(Mixed(3 * uint64_t{m_moment.phase} + c) + y) + first;
        int16_t* values = line.planes[c].data();
        for (size_t done = 0; done < count;) {
            at &= kNoiseEntries - 1;
            const size_t run = std::min(count - done, kNoiseEntries - at);
            const int16_t* steps = m_noiseSteps.data() + at;
            for (size_t i = 0; i < run; ++i)
                values[done + i] = Clamped(values[done + i] + steps[i]);
            done += run;
            at += run;
        }
    }
}

void RowMaker::Finish(Line& line) {
    const size_t count = m_to - m_from;
    int16_t* red = line.planes[0].data();
    int16_t* green = line.planes[1].data();
    int16_t* blue = line.planes[2].data();
    if (m_tone->HasMatrix()) {
        const std::array<float, 9> matrix = m_tone->Matrix();
        for (size_t i = 0; i < count; ++i) {
            const float r = red[i];
            const float g = green[i];
            const float b = blue[i];
            const int16_t newRed = Tone::Mixed(&matrix[0], r, g, b);
            const int16_t newGreen = Tone::Mixed(&matrix[3], r, g, b);
            const int16_t newBlue = Tone::Mixed(&matrix[6], r, g, b);
            red[i] = newRed;
            green[i] = newGreen;
            blue[i] = newBlue;
        }
    }
    if (m_tone->HasCurve()) {
        const auto& curve = m_tone->Curve();
        for (int16_t* plane : {red, green, blue}) {
            for (size_t i = 0; i < count; ++i)
                plane[i] = static_cast<int16_t>(curve[static_cast<size_t>(plane[i])]);
        }
    }
}

void RowMaker::Sharpen(const Line& above, const Line& here, const Line& below) {
    const size_t last = m_to - m_from - 1;
    const int share = m_sharpness;
    for (size_t c = 0; c < 3; ++c) {
        const int16_t* up = above.planes[c].data();
        const int16_t* middle = here.planes[c].data();
        const int16_t* down = below.planes[c].data();
        m_sharp[c].resize(last + 1);
        int16_t* to = m_sharp[c].data();
        const auto at = [=](size_t i, size_t left, size_t right) {
            const int differences = 4 * middle[i] - up[i] - down[i] - middle[left] - middle[right];
            return Clamped(middle[i] + ((differences * share + 2048) >> 12));
        };
        for (size_t i = 1; i < last; ++i)
            to[i] = at(i, i - 1, i + 1);
        to[0] = at(0, 0, std::min<size_t>(1, last));
        to[last] = at(last, last - std::min<size_t>(1, last), last);
    }
}

void RowMaker::Interleave(const std::array<Plane, 3>& planes) {
    const size_t skip = m_x0 - m_from;
    const int16_t* red = planes[0].data() + skip;
    const int16_t* green = planes[1].data() + skip;
    const int16_t* blue = planes[2].data() + skip;
    for (size_t i = 0; i < m_row.size(); ++i) {
        m_row[i] = {static_cast<uint16_t>(red[i]), static_cast<uint16_t>(green[i]),
                    static_cast<uint16_t>(blue[i])};
    }
}

} // namespace vcam
