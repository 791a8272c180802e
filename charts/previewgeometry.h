#pragma once

#include <QSize>

/// Width over height, as the preview compares shapes. Height must not be 0.
inline float aspectRatio(int width, int height)
{
    return static_cast<float>(width) / static_cast<float>(height);
}

/// The largest size with the frame's shape inside the container, in whole pixels, at least 1 x 1.
/// All four numbers are above 0.
QSize fittedPreviewSize(int frameWidth, int frameHeight, int containerWidth, int containerHeight);
