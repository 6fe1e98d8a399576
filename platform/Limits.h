#pragma once

#include <QtGlobal>

// How many bytes a host may make us keep in memory. What is larger counts as a failed exchange or a
// failed decompression, so that neither a mistake nor malice on a host ends the launcher.
namespace Limits {

// A manifest of 400,000 files is about as large.
constexpr qint64 Manifest = 64LL * 1024 * 1024;
constexpr qint64 LoginReply = 128LL * 1024 * 1024;
constexpr qint64 Installer = 1024LL * 1024 * 1024;

// A game file as it travels: a quarter of the machine's memory, 512 MB at least.
[[nodiscard]] qint64 gameFileBody();
// A game file unpacked: half of the machine's memory, 1 GB at least.
[[nodiscard]] qint64 gameFileContents();

} // namespace Limits
