#include "model/PatchSolver.h"

#include "model/VARNOPatchFile.h"

PatchSolver::PatchFiles PatchSolver::solve(const PatchFiles &patches,
                                           const std::optional<QString> &startHash,
                                           const std::optional<QString> &endHash)
{
    const PatchTree tree = createPatchTree(patches, startHash);
    if (!tree.root)
        return {};
    const QList<PatchNode *> path = solve(tree.root, endHash);
    PatchFiles chain;
    chain.reserve(path.size());
    for (const PatchNode *node : path)
        chain += node->patchFile();
    return chain;
}

PatchSolver::PatchTree PatchSolver::createPatchTree(const PatchFiles &patches,
                                                    const std::optional<QString> &startHash)
{
    PatchTree tree;
    QList<PatchNode *> list;
    for (const auto &patch : patches) {
        tree.nodes.push_back(std::make_unique<PatchNode>(patch));
        list += tree.nodes.back().get();
        if (patch->fromHash() == startHash)
            tree.root = list.last();
    }
    for (PatchNode *node : list)
        node->setChildren(findChildrenFor(node->patchFile()->toHash(), list));
    return tree;
}

QList<PatchNode *> PatchSolver::findChildrenFor(const QString &hash,
                                                const QList<PatchNode *> &patches)
{
    QList<PatchNode *> children;
    for (PatchNode *node : patches) {
        if (node->patchFile()->fromHash() == hash)
            children += node;
    }
    return children;
}

QList<PatchNode *> PatchSolver::solve(PatchNode *root, const std::optional<QString> &endHash)
{
    QList<PatchNode *> stack{root};
    root->setVisited(true);
    while (!stack.isEmpty()) {
        if (stack.last()->patchFile()->toHash() == endHash)
            return stack;
        if (PatchNode *child = stack.last()->unvisitedChild()) {
            child->setVisited(true);
            stack += child;
        } else {
            stack.removeLast();
        }
    }
    return stack;
}
