#include "charts/previewgeometry.h"

QSize fittedPreviewSize(int frameWidth, int frameHeight, int containerWidth, int containerHeight)
{
    const float frameAspect = aspectRatio(frameWidth, frameHeight);
    QSize fitted(containerWidth, containerHeight);
    if (frameAspect > aspectRatio(containerWidth, containerHeight))
        fitted.setHeight(static_cast<int>(qint64(containerWidth) * frameHeight / frameWidth));
    else
        fitted.setWidth(static_cast<int>(static_cast<float>(containerHeight) * frameAspect));
    // A widget without an area would never be asked to fit again.
    return fitted.expandedTo(QSize(1, 1));
}
