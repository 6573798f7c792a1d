// Whole drawings against pictures of them by another renderer.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <kernel/FileOutStream.h>
#include <raster/Buffer.h>
#include <raster/Codecs.h>
#include <renderer/core/BitmapRenderTarget.h>

#include <svg/Drawing.h>

namespace {

using Kernel::Counted;
using Raster::DynamicBitmap;
using Raster::DynamicBuffer;
using View =
    Raster::Buffer<Raster::Red8, Raster::Green8, Raster::Blue8, Raster::Alpha8, Raster::X5>;

constexpr unsigned Width = 1024;

struct Row
{
    std::string name;
    double limit;
};

std::vector<Row> ReadLimits()
{
    std::vector<Row> rows;
    std::ifstream file(DRAWINGS "/limits.tsv");
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#')
            continue;
        std::istringstream columns(line);
        Row row;
        std::getline(columns, row.name, '\t');
        columns >> row.limit;
        rows.push_back(row);
    }
    return rows;
}

std::string ReadBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

Counted<DynamicBuffer> DrawFile(const std::string& name)
{
    Svg::Drawing drawing(ReadBytes(DRAWINGS "/svg/" + name + ".svg"));
    const double scale = Width / drawing.GetWidth();
    const Counted<Renderer::BitmapRenderTarget> target(
        Renderer::BitmapRenderTarget::Create(Raster::Format::RGBA8, {}));
    EXPECT_TRUE(target->CreateBuffer(Width, unsigned(std::lround(drawing.GetHeight() * scale))));
    target->SetDeviceExpansionTolerance(0.05);
    target->SetLogToDevTransform(Raster::AffineTransform::Scaling(scale, scale));
    drawing.Draw(*target);
    return target->GetBuffer();
}

View Look(Counted<DynamicBuffer> buffer)
{
    View view;
    EXPECT_TRUE(view.Attach(std::move(buffer)));
    return view;
}

/// The reference as premultiplied RGBA8.
Counted<DynamicBuffer> ReadReference(const std::string& name)
{
    const std::string bytes = ReadBytes(DRAWINGS "/reference/" + name + ".png");
    const auto bitmap =
        Raster::ReadPNG({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
    View copy;
    EXPECT_TRUE(copy.Create(bitmap->GetWidth(), bitmap->GetHeight()));
    for (unsigned y = 0; y < bitmap->GetHeight(); ++y)
        std::copy_n(bitmap->GetBuffer()->GetRow(y), bitmap->GetWidth() * std::size_t{4},
                    reinterpret_cast<unsigned char*>(copy.GetRow(y)));
    EXPECT_EQ(bitmap->GetFormat(), Raster::Format::RGBA8);
    return copy.GetDynamicBuffer();
}

/// The mean difference of R, G and B on white over the common rectangle; \p difference gets it as a
/// picture, four times as strong.
double Compare(const View& ours, const View& theirs, const View& difference)
{
    const unsigned width = std::min(ours.GetWidth(), theirs.GetWidth());
    const unsigned height = std::min(ours.GetHeight(), theirs.GetHeight());
    double sum = 0.0;
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            const auto& a = ours.GetRow(y)[x];
            const auto& b = theirs.GetRow(y)[x];
            auto& d = difference.GetRow(y)[x];
            for (std::size_t i = 0; i < 3; ++i) {
                const int step = std::abs((a[i] + 255 - a[3]) - (b[i] + 255 - b[3]));
                sum += step;
                d[i] = static_cast<std::uint8_t>(255 - std::min(255, 4 * step));
            }
            d[3] = 255;
        }
    }
    return sum / (3.0 * width * height);
}

void WritePicture(const std::string& name, const Counted<DynamicBuffer>& buffer)
{
    Kernel::FileOutStream file(PICTURES "/" + name + ".png");
    Raster::WritePNG(file, DynamicBitmap(buffer));
    file.Close();
}

TEST(Drawings, KeepWithinTheirLimits)
{
    std::vector<double> errors;
    for (const Row& row : ReadLimits()) {
        const Counted<DynamicBuffer> picture = DrawFile(row.name);
        const View ours = Look(picture), theirs = Look(ReadReference(row.name));
        View difference;
        ASSERT_TRUE(difference.Create(ours.GetWidth(), ours.GetHeight()));
        errors.push_back(Compare(ours, theirs, difference));
        EXPECT_LE(errors.back(), row.limit) << row.name << ": see " << PICTURES;
        if (errors.back() > row.limit) {
            WritePicture(row.name, picture);
            WritePicture(row.name + "-difference", difference.GetDynamicBuffer());
        }
    }
    ASSERT_EQ(errors.size(), 30U);
    std::nth_element(errors.begin(), errors.begin() + std::ptrdiff_t(errors.size() / 2),
                     errors.end());
    EXPECT_LE(errors[errors.size() / 2], 0.1);
}

TEST(Drawings, AreTheSameBytesEveryTime)
{
    for (const char* name : {"slim_cd_drive_frederic_m_01", "horse_2_konstantin_r._01"}) {
        const View first = Look(DrawFile(name)), second = Look(DrawFile(name));
        for (unsigned y = 0; y < first.GetHeight(); ++y)
            ASSERT_TRUE(
                std::equal(first.GetRow(y), first.GetRow(y) + first.GetWidth(), second.GetRow(y)))
                << name << " row " << y;
    }
}

} // namespace
