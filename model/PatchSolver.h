#pragma once

#include "model/PatchNode.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

class VARNOPatchFile;

// Finds a chain of patches from one version of a file to another. Made anew for each file; the
// lists are short, so nothing is indexed.
class PatchSolver
{
public:
    using PatchFiles = QList<std::shared_ptr<VARNOPatchFile>>;

    // The nodes of one search and where it starts; no root when no patch starts there.
    struct PatchTree
    {
        std::vector<std::unique_ptr<PatchNode>> nodes;
        PatchNode *root = nullptr;
    };

    // The chain to apply, in order; empty when there is none. It is the first in depth-first order
    // with patches in the manifest's order, not the shortest. Without a start hash it is empty.
    [[nodiscard]] PatchFiles solve(const PatchFiles &patches,
                                   const std::optional<QString> &startHash,
                                   const std::optional<QString> &endHash);

    // The root is the last patch listed that starts from the hash; the others that start there are
    // never a first step, so the manifest's order of patches matters.
    [[nodiscard]] PatchTree createPatchTree(const PatchFiles &patches,
                                            const std::optional<QString> &startHash);
    // The nodes whose patch starts from the hash, in the given order.
    [[nodiscard]] QList<PatchNode *> findChildrenFor(const QString &hash,
                                                     const QList<PatchNode *> &patches);
    // The path found, root first; empty when there is none. Marks the nodes it enters and never
    // clears a mark.
    [[nodiscard]] QList<PatchNode *> solve(PatchNode *root, const std::optional<QString> &endHash);
};
