#include "platform/linux/PieceReader.h"

#include <array>
#include <cerrno>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <unistd.h>

namespace {

using Take = std::function<void(const char *, size_t)>;

constexpr size_t PieceSize = 128UL * 1024;
// From here on a thread's start costs less than it saves.
constexpr off_t LargeFile = 512L * 1024;

// A part of a file. None is left once `count` is 0; below 0 it could not be read.
struct Piece
{
    const std::unique_ptr<char[]> bytes = std::make_unique_for_overwrite<char[]>(PieceSize);
    ssize_t count = 0;

    void readFrom(int file)
    {
        do
            count = read(file, bytes.get(), PieceSize);
        while (count < 0 && errno == EINTR);
    }
};

bool readOnOneThread(int file, const Take &take)
{
    Piece piece;
    for (piece.readFrom(file); piece.count > 0; piece.readFrom(file))
        take(piece.bytes.get(), size_t(piece.count));
    return piece.count == 0;
}

// Pieces on their way from the thread that reads them to the one that takes them.
class Belt
{
public:
    void readAllFrom(int file)
    {
        Piece *piece = nullptr;
        do {
            piece = &waitForAnEmptyOne();
            piece->readFrom(file);
            const std::lock_guard lock(m_mutex);
            ++m_readCount;
            m_changed.notify_one();
        } while (piece->count > 0);
    }

    bool takeAll(const Take &take)
    {
        for (;;) {
            const Piece &piece = waitForAFullOne();
            if (piece.count <= 0)
                return piece.count == 0;
            take(piece.bytes.get(), size_t(piece.count));
            const std::lock_guard lock(m_mutex);
            ++m_takenCount;
            if (m_readCount - m_takenCount == m_pieces.size() / 2)
                m_changed.notify_one();
        }
    }

private:
    Piece &waitForAnEmptyOne()
    {
        std::unique_lock lock(m_mutex);
        if (m_readCount - m_takenCount == m_pieces.size())
            m_changed.wait(lock,
                           [this] { return m_readCount - m_takenCount <= m_pieces.size() / 2; });
        return m_pieces[m_readCount % m_pieces.size()];
    }

    const Piece &waitForAFullOne()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_readCount > m_takenCount; });
        return m_pieces[m_takenCount % m_pieces.size()];
    }

    std::array<Piece, 8> m_pieces;
    std::mutex m_mutex; // guards everything below
    std::condition_variable m_changed;
    size_t m_readCount = 0;
    size_t m_takenCount = 0;
};

} // namespace

bool readPieces(int file, off_t size, const Take &take)
{
    if (size >= LargeFile) {
        Belt belt;
        std::jthread reader;
        try {
            reader = std::jthread([&belt, file] { belt.readAllFrom(file); });
        } catch (const std::exception &) { // no thread or no memory left
            return readOnOneThread(file, take);
        }
        return belt.takeAll(take);
    }
    return readOnOneThread(file, take);
}
