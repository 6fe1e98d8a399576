#include "model/PatchNode.h"

#include <algorithm>

PatchNode::PatchNode(std::shared_ptr<VARNOPatchFile> patchFile) : m_patchFile(std::move(patchFile))
{
}

PatchNode *PatchNode::unvisitedChild() const
{
    const auto child = std::find_if(m_children.cbegin(), m_children.cend(),
                                    [](const PatchNode *node) { return !node->visited(); });
    return child == m_children.cend() ? nullptr : *child;
}
