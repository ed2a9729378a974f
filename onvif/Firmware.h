#pragma once

#include "PackageInfo.h"
#include "VersionNumber.h"

namespace qv {

// Which firmware is for which camera: plain functions.

/// The version in what a camera or a catalogue calls one: from its first number on, one with dots before one without,
/// and up to a comma, colon or bracket, at which settings stores would stumble. "5.7.3 build 220315" of "V5.7.3 build
/// 220315"; the version 0 of what has no number.
VersionNumber firmwareVersion(const QString &text);

/// Whether a camera that runs @p running has got the firmware @p wanted: cameras and release lists spell it unlike, so
/// equal numbers do where one of the two tells nothing else, "5.7.3 build 220315" for "5.7.3".
bool isFirmware(const VersionNumber &running, const VersionNumber &wanted);

/// Whether @p package is firmware for cameras of @p model, as the client finds it for them.
bool isForModel(const PackageInfo &package, const QString &model);

/// Whether the client can keep @p model in its settings: one without "," and ":".
bool isStorable(const QString &model);

} // namespace qv
