#pragma once

#include <raster/adjustments/BlackAndWhiteAdjustment.h>
#include <raster/adjustments/BrightnessContrastAdjustment.h>
#include <raster/adjustments/ChannelMixerAdjustment.h>
#include <raster/adjustments/CurvesAdjustment.h>
#include <raster/adjustments/HueSaturationLightnessAdjustment.h>
#include <raster/adjustments/InvertAdjustment.h>
#include <raster/adjustments/LevelsAdjustment.h>
#include <raster/adjustments/OpenColorIOAdjustment.h>
#include <raster/adjustments/PosteriseAdjustment.h>
#include <raster/adjustments/ThresholdAdjustment.h>
#include <raster/adjustments/WhiteBalanceAdjustment.h>

namespace Renderer {

/// \name The colour transforms that RenderTarget::PushColourTransform can be given, and their
/// settings
/// @{
using Raster::BlackAndWhiteAdjustment;
using Raster::BlackAndWhiteSettings;
using Raster::BrightnessContrastAdjustment;
using Raster::BrightnessContrastSettings;
using Raster::ChannelMixerAdjustment;
using Raster::ChannelMixerSettings;
using Raster::CurvesAdjustment;
using Raster::CurvesSettings;
using Raster::HueSaturationLightnessAdjustment;
using Raster::HueSaturationLightnessSettings;
using Raster::InvertAdjustment;
using Raster::LevelsAdjustment;
using Raster::LevelsRange;
using Raster::LevelsSettings;
using Raster::OpenColorIOAdjustment;
using Raster::OpenColorIOSettings;
using Raster::PosteriseAdjustment;
using Raster::PosteriseSettings;
using Raster::ThresholdAdjustment;
using Raster::ThresholdSettings;
using Raster::ToneCurve;
using Raster::ToneCurvePoint;
using Raster::WhiteBalanceAdjustment;
using Raster::WhiteBalanceSettings;
/// @}

} // namespace Renderer
