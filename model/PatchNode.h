#pragma once

#include <QList>

#include <memory>

class VARNOPatchFile;

// One patch as a node of the search for a chain of patches. Nodes can be each other's and their own
// children; whoever made them owns them.
class PatchNode
{
public:
    explicit PatchNode(std::shared_ptr<VARNOPatchFile> patchFile);

    [[nodiscard]] const std::shared_ptr<VARNOPatchFile> &patchFile() const { return m_patchFile; }
    [[nodiscard]] const QList<PatchNode *> &children() const { return m_children; }
    void setChildren(const QList<PatchNode *> &children) { m_children = children; }
    [[nodiscard]] bool visited() const { return m_visited; }
    void setVisited(bool visited) { m_visited = visited; }

    // The first child that the search has not entered; null when there is none.
    [[nodiscard]] PatchNode *unvisitedChild() const;

private:
    bool m_visited = false;
    const std::shared_ptr<VARNOPatchFile> m_patchFile;
    QList<PatchNode *> m_children;
};
