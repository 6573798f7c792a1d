#pragma once

#include <array>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <renderer/core/BitmapRenderTarget.h>

#include "TestDrawing.h"

/// A document drawn into pixels, one per unit.
class Picture
{
public:
    explicit Picture(const std::string& document, double scale = 1.0,
                     const std::filesystem::path& folder = {})
        : m_target(Renderer::BitmapRenderTarget::Create(Raster::Format::RGBA8, {}))
    {
        Svg::Drawing drawing(document, folder);
        m_target->CreateBuffer(static_cast<unsigned>(drawing.GetWidth() * scale),
                               static_cast<unsigned>(drawing.GetHeight() * scale));
        m_target->SetDeviceExpansionTolerance(0.01);
        m_target->SetLogToDevTransform(Raster::AffineTransform::Scaling(scale, scale));
        drawing.Draw(*m_target);
        m_notices = drawing.GetNotices();
    }

    /// Premultiplied channels of a pixel.
    std::array<int, 4> Get(unsigned x, unsigned y) const
    {
        const unsigned char* pixel = m_target->GetBuffer()->GetRow(y) + 4 * x;
        return {pixel[0], pixel[1], pixel[2], pixel[3]};
    }

    /// The mean difference of the channels from another picture of the same size.
    double GetDifference(const Picture& other) const
    {
        const Raster::DynamicBuffer& buffer = *m_target->GetBuffer();
        double sum = 0.0;
        for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
            for (unsigned x = 0; x < 4 * buffer.GetWidth(); ++x)
                sum += std::abs(buffer.GetRow(y)[x] - other.m_target->GetBuffer()->GetRow(y)[x]);
        }
        return sum / (4.0 * buffer.GetWidth() * buffer.GetHeight());
    }

    /// What was left out; empty for nothing.
    std::string GetNotices() const
    {
        std::string all;
        for (const std::string& notice : m_notices)
            all += notice + '\n';
        return all;
    }

    /// The area that is covered, in pixels.
    double GetArea() const
    {
        double area = 0.0;
        for (unsigned y = 0; y < m_target->GetBuffer()->GetHeight(); ++y) {
            for (unsigned x = 0; x < m_target->GetBuffer()->GetWidth(); ++x)
                area += Get(x, y)[3] / 255.0;
        }
        return area;
    }

private:
    Kernel::Counted<Renderer::BitmapRenderTarget> m_target;
    std::vector<std::string> m_notices;
};

inline void ExpectPixel(const std::array<int, 4>& actual, const std::array<int, 4>& expected,
                        int tolerance = 1)
{
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << i;
}
