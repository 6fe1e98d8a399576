#pragma once

#include <QByteArrayList>

#include <random>

// Makes variations of some inputs, the same ones in every run.
class Mutator
{
public:
    explicit Mutator(QByteArrayList seeds) : m_seeds(std::move(seeds)) {}

    // One of the seeds with one to eight changes.
    [[nodiscard]] QByteArray next();

private:
    void change(QByteArray &bytes);
    [[nodiscard]] qsizetype below(qsizetype limit) { return qsizetype(m_random()) % limit; }
    [[nodiscard]] QByteArray pieceOf(const QByteArray &bytes);

    const QByteArrayList m_seeds;
    std::mt19937 m_random; // seeded by its own constant
};
