#pragma once

#include <string>

#include <gtest/gtest.h>

#include <svg/Drawing.h>

#include "RecordingTarget.h"

/// A document around some elements, 200 × 100 pixels large unless the attributes say otherwise.
inline std::string MakeDocument(const std::string& content,
                                const std::string& attributes = "width='200' height='100'")
{
    return "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' " +
           attributes + ">" + content + "</svg>";
}

/// Draws a document on a recording target.
struct Recorded
{
    explicit Recorded(const std::string& document) : drawing(document)
    {
        drawing.Draw(target);
        // Whatever was pushed has been popped.
        EXPECT_EQ(target.GetWorldTransform(), RecordingTarget::Params());
    }

    Svg::Drawing drawing;
    RecordingTarget target;
};

inline void ExpectBox(const Kernel::RectT<double>& actual, const Kernel::RectT<double>& expected,
                      double tolerance = 1e-9)
{
    EXPECT_NEAR(actual.left, expected.left, tolerance);
    EXPECT_NEAR(actual.top, expected.top, tolerance);
    EXPECT_NEAR(actual.right, expected.right, tolerance);
    EXPECT_NEAR(actual.bottom, expected.bottom, tolerance);
}

/// The colour of a solid fill, unpremultiplied, as #rrggbbaa; "none" where nothing is painted.
std::string Describe(const Renderer::FillDescriptorConst& fill);
