#pragma once

#include <QtGlobal>

#include <mutex>

// One file's turn at large contents. The contents of files are unpacked and written on as many
// threads as there are processors; large ones wait for each other, so that all of them together
// need hardly more memory than a single file may.
//
// To be used on one thread, and to be kept until the contents are gone.
class LargeContentsTurn
{
public:
    // Contents of more than this, in bytes, take a turn: 256 MB, less where there are many
    // processors for little memory.
    [[nodiscard]] static qint64 large();

    // One of the two is to be called before the contents grow to `size` bytes. Whether they may at
    // once: they are not large, or no others are held anywhere in the process, or this turn has
    // begun before.
    [[nodiscard]] bool tryToHold(qint64 size);
    // Waits until they may.
    void waitToHold(qint64 size);

private:
    std::unique_lock<std::mutex> m_turn{theOnlyOne(), std::defer_lock};

    static std::mutex &theOnlyOne();
};
