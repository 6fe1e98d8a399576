#include "TestMain.h"
#include "model/PatchSolver.h"
#include "model/VARNOPatchFile.h"

#include <QTest>

#include <random>
#include <set>

using namespace Qt::StringLiterals;
using Hash = std::optional<QString>;
Q_DECLARE_METATYPE(Hash)

namespace {

// "A>B" is the patch from A to B; "A>B:2" is another one.
PatchSolver::PatchFiles patchesOf(const QStringList &texts)
{
    PatchSolver::PatchFiles patches;
    for (const QString &text : texts) {
        const QString hashes = text.section(u':', 0, 0);
        patches +=
            std::make_shared<VARNOPatchFile>(text, u"/game/file"_s, hashes.section(u'>', 0, 0),
                                             hashes.section(u'>', 1, 1), u"https://h/"_s);
    }
    return patches;
}

QStringList namesOf(const PatchSolver::PatchFiles &patches)
{
    QStringList names;
    for (const auto &patch : patches)
        names += patch->name();
    return names;
}

QStringList namesOf(const QList<PatchNode *> &nodes)
{
    QStringList names;
    for (const PatchNode *node : nodes)
        names += node->patchFile()->name();
    return names;
}

QStringList randomPatches(std::mt19937 &random)
{
    std::uniform_int_distribution<int> count(0, 14);
    std::uniform_int_distribution<int> hash('A', 'G');
    QStringList patches;
    for (int left = count(random); left > 0; --left)
        patches += u"%1>%2:%3"_s.arg(QChar(hash(random))).arg(QChar(hash(random))).arg(left);
    return patches;
}

// Whether the end can be reached from A when the first step is the last patch from A.
bool isReachable(const QStringList &patches, QChar end)
{
    std::set<QChar> reached;
    for (const QString &patch : patches) {
        if (patch[0] == u'A')
            reached = {patch[2]};
    }
    for (size_t before = 0; before != reached.size();) {
        before = reached.size();
        for (const QString &patch : patches) {
            if (reached.contains(patch[0]))
                reached.insert(patch[2]);
        }
    }
    return reached.contains(end);
}

// What is wrong with the answer; empty when it is a chain from A to the end without a patch used
// twice.
QString faultOf(const QStringList &chain, QChar end)
{
    QChar hash = u'A';
    for (const QString &patch : chain) {
        if (patch[0] != hash)
            return u"a gap before "_s + patch;
        hash = patch[2];
    }
    if (hash != end)
        return u"it ends in "_s + hash;
    return QSet<QString>(chain.begin(), chain.end()).size() == chain.size() ? QString()
                                                                            : u"a patch twice"_s;
}

} // namespace

class TestPatchSolver : public QObject
{
    Q_OBJECT

private slots:
    void findsTheFirstChainInTheListsOrder_data();
    void findsTheFirstChainInTheListsOrder();
    void answersWithAChainExactlyWhenThereIsOne();
    void followsAChainOfThousands();
    void makesANodeAPatchWithItsSuccessorsAsChildren();
    void hasNoRootWhenNoPatchStartsThere();
    void findsChildrenInTheGivenOrder();
    void takesTheFirstChildNotYetVisited();
};

void TestPatchSolver::findsTheFirstChainInTheListsOrder_data()
{
    QTest::addColumn<QStringList>("patches");
    QTest::addColumn<Hash>("start");
    QTest::addColumn<Hash>("end");
    QTest::addColumn<QStringList>("chain");
    const auto row = [](const char *name, const char *patches, const char *start, const char *end,
                        const char *chain) {
        const auto list = [](const char *text) {
            return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
        };
        const auto hash = [](const char *text) {
            return text ? Hash(QString::fromLatin1(text)) : Hash();
        };
        QTest::newRow(name) << list(patches) << hash(start) << hash(end) << list(chain);
    };
    row("two steps", "A>B B>C", "A", "C", "A>B B>C");
    row("two steps listed backwards", "B>C A>B", "A", "C", "A>B B>C");
    row("a cycle without the end", "A>B B>A", "A", "C", "");
    row("the last that starts there is the root", "A>X A>B B>C", "A", "C", "A>B B>C");
    row("no other is tried as the first step", "A>B B>C A>X", "A", "C", "");
    row("the root alone", "A>C", "A", "C", "A>C");
    row("the root's end before any child", "A>C C>C", "A", "C", "A>C");
    row("start and end are not compared", "A>B B>A", "A", "A", "A>B B>A");
    row("a patch from a hash to itself", "A>A", "A", "A", "A>A");
    row("start is the end and nothing leads back", "A>B", "A", "A", "");
    row("a cycle behind the first step", "D>E E>F F>E", "D", "F", "D>E E>F");
    row("the first in depth, not the shortest", "A>B B>C B>D C>D", "A", "D", "A>B B>C C>D");
    row("the shortest when it comes first", "A>B B>D B>C C>D", "A", "D", "A>B B>D");
    row("back out of a dead end", "A>B B>X X>Y B>C", "A", "C", "A>B B>C");
    row("the first of two alike", "A>B B>C:1 B>C:2", "A", "C", "A>B B>C:1");
    row("the last of two alike as the root", "A>B:1 A>B:2 B>C", "A", "C", "A>B:2 B>C");
    row("through the root's start again", "A>X A>B B>A X>C", "A", "C", "A>B B>A A>X X>C");
    row("no patches", "", "A", "C", "");
    row("none starts there", "B>C", "A", "C", "");
    row("none leads there", "A>B", "A", "C", "");
    row("no start", "A>B >B", nullptr, "B", "");
    row("no end", "A>B A>", "A", nullptr, "");
    row("an empty start is a start", "A>B >B", "", "B", ">B");
    row("case matters", "a>C", "A", "C", "");
}

void TestPatchSolver::findsTheFirstChainInTheListsOrder()
{
    QFETCH(QStringList, patches);
    QFETCH(Hash, start);
    QFETCH(Hash, end);
    QFETCH(QStringList, chain);
    PatchSolver solver;
    QCOMPARE(namesOf(solver.solve(patchesOf(patches), start, end)), chain);
}

void TestPatchSolver::answersWithAChainExactlyWhenThereIsOne()
{
    std::mt19937 random(20240229);
    QStringList faults;
    for (int round = 0; round < 5000; ++round) {
        const QStringList patches = randomPatches(random);
        PatchSolver solver;
        const QStringList chain = namesOf(solver.solve(patchesOf(patches), u"A"_s, u"F"_s));
        const bool isFound = !chain.isEmpty();
        if (isFound != isReachable(patches, u'F'))
            faults += u"found or not? "_s + patches.join(u' ');
        else if (isFound && !faultOf(chain, u'F').isEmpty())
            faults += faultOf(chain, u'F') + u": "_s + patches.join(u' ');
    }
    QCOMPARE(faults, QStringList());
}

void TestPatchSolver::followsAChainOfThousands()
{
    QStringList texts;
    for (int i = 0; i < 2000; ++i)
        texts += u"%1>%2"_s.arg(i).arg(i + 1);
    PatchSolver solver;
    QCOMPARE(namesOf(solver.solve(patchesOf(texts), u"0"_s, u"2000"_s)), texts);
}

void TestPatchSolver::makesANodeAPatchWithItsSuccessorsAsChildren()
{
    PatchSolver solver;
    const auto tree =
        solver.createPatchTree(patchesOf({u"A>B"_s, u"B>B"_s, u"B>A"_s, u"A>C"_s}), u"A"_s);
    QStringList nodes{u"root "_s + tree.root->patchFile()->name()};
    for (const auto &node : tree.nodes)
        nodes += node->patchFile()->name() + u": "_s + namesOf(node->children()).join(u' ') +
                 (node->visited() ? u" visited"_s : QString());
    QCOMPARE(nodes, QStringList({u"root A>C"_s, u"A>B: B>B B>A"_s, u"B>B: B>B B>A"_s,
                                 u"B>A: A>B A>C"_s, u"A>C: "_s}));
}

void TestPatchSolver::hasNoRootWhenNoPatchStartsThere()
{
    PatchSolver solver;
    QCOMPARE(solver.createPatchTree(patchesOf({u"A>B"_s}), u"B"_s).root, nullptr);
}

void TestPatchSolver::findsChildrenInTheGivenOrder()
{
    PatchSolver solver;
    const auto tree = solver.createPatchTree(patchesOf({u"B>1"_s, u"A>2"_s, u"B>3"_s}), u"B"_s);
    const QList<PatchNode *> backwards{tree.nodes[2].get(), tree.nodes[1].get(),
                                       tree.nodes[0].get()};
    QCOMPARE(namesOf(solver.findChildrenFor(u"B"_s, backwards)), QStringList({u"B>3"_s, u"B>1"_s}));
}

void TestPatchSolver::takesTheFirstChildNotYetVisited()
{
    PatchNode parent(nullptr);
    PatchNode first(nullptr);
    PatchNode second(nullptr);
    PatchNode third(nullptr);
    QList<const PatchNode *> taken{parent.unvisitedChild()};
    parent.setChildren({&first, &second, &third});
    second.setVisited(true);
    while (PatchNode *child = parent.unvisitedChild()) {
        taken += child;
        child->setVisited(true);
    }
    QCOMPARE(taken, QList<const PatchNode *>({nullptr, &first, &third}));
}

QUELLMOOR_TEST(TestPatchSolver, "PatchSolver")
#include "tst_PatchSolver.moc"
