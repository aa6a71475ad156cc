#pragma once

#include <array>
#include <string_view>

// The parameters of shader programs that are filled here when a program declares them.
// clang-format off
#define DGPU_PARAMETERS(X) \
  X(modelView) X(modelViewProj) X(modelViewIT) X(modelMatrix) X(modelMatrixInv) X(prevModelViewProj) \
  X(billBoardMatrix) X(textureMatrix) X(textureMatrix0) X(textureMatrix1) X(textureMatrix2) X(textureMatrix3) \
  X(textureMatrix4) X(textureMatrix5) X(textureMatrix6) X(boneMatrixArray) X(eyePosW) X(forward) X(time) \
  X(serverTime) X(aspect) X(fovV) X(frustumNear) X(frustumFar) X(resolution) X(texelSize) X(size) X(offset) \
  X(scale) X(center) X(center0) X(center1) X(center2) X(center3) X(center4) X(center5) X(center6) X(velocity) \
  X(exposure) X(heat) X(alpha) X(shininess) X(mipmap) X(tangent) X(fresnelBias) X(fresnelPower) X(fresnelScale) \
  X(curDepthTex) X(activeLights) X(lightAmbient) X(lightColor) X(lightDirection) X(lightFar0) X(lightFar1) \
  X(lightFar2) X(lightFar3) X(lightFar4) X(lightFar5) X(lightFar6) X(lightFar7) X(fogColor) X(fogDensity) \
  X(sunIntensity) X(sunny) X(night) X(near) X(clouds) X(cloudHeight) X(cloudSpeed) X(atmosMie) X(atmosRayleigh) \
  X(extinctionFactor) X(smCor) X(smRes) X(smSplits) X(smTexMatArray) X(prjUp) X(prjDown) X(projectionEyePos) \
  X(projectionProjectorLLC) X(projectionProjectorPos) X(projectionProjectorRight) X(projectionProjectorUp) \
  X(projectionWindowLLC) X(projectionWindowRight) X(projectionWindowUp) X(edgeBlendBrightness) X(edgeBlendGamma) \
  X(edgeBlendLeft) X(edgeBlendLeftEnd) X(edgeBlendMaxDistance) X(edgeBlendP) X(edgeBlendRight) \
  X(edgeBlendRightEnd) X(mvPoseX_XOffset) X(mvPoseX_XScale) X(mvPoseX_YOffset) X(mvPoseX_YScale)
// clang-format on

enum class DGPUParameter
{
#define DGPU_PARAMETER(name) name,
  DGPU_PARAMETERS(DGPU_PARAMETER)
#undef DGPU_PARAMETER
      COUNT
};

inline constexpr std::array<std::string_view, static_cast<size_t>(DGPUParameter::COUNT)> DGPU_PARAMETER_NAMES = {
#define DGPU_PARAMETER(name) #name,
    DGPU_PARAMETERS(DGPU_PARAMETER)
#undef DGPU_PARAMETER
};
