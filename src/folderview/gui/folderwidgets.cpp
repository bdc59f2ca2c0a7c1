#include "folderwidgets.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QPainter>
#include <QRegularExpression>
#include <QStorageInfo>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTreeWidget>

namespace fleetwright {

namespace {

// A root like "C:/" or a path that starts with a drive letter: such paths compare without regard to case.
bool hasDriveLetter(const QString &path)
{
    return path.size() >= 2 && path.at(1) == QLatin1Char(':') && path.at(0).isLetter();
}

Qt::CaseSensitivity caseFor(const QString &path)
{
    return hasDriveLetter(path) ? Qt::CaseInsensitive : Qt::CaseSensitive;
}

// Absolute, clean, with the platform's separators; a bare "c:" is that drive's root.
QString normalisedFolder(const QString &folder, const QString &base)
{
    QString text = QDir::fromNativeSeparators(folder.trimmed());
    if (text.size() == 2 && hasDriveLetter(text))
        text += QLatin1Char('/');
    const QString absolute = QDir::isAbsolutePath(text) ? text : QDir(base).absoluteFilePath(text);
    return QDir::toNativeSeparators(QDir::cleanPath(absolute));
}

QString joinPath(const QString &folder, const QString &name)
{
    if (folder.endsWith(QDir::separator()))
        return folder + name;
    return folder + QDir::separator() + name;
}

// File systems that hold no user folders: left out of the drive list.
bool isSystemVolume(const QStorageInfo &volume)
{
    static const QStringList pseudoTypes {
        QStringLiteral("tmpfs"),    QStringLiteral("devtmpfs"),   QStringLiteral("squashfs"),
        QStringLiteral("ramfs"),    QStringLiteral("proc"),       QStringLiteral("sysfs"),
        QStringLiteral("cgroup"),   QStringLiteral("cgroup2"),    QStringLiteral("autofs"),
        QStringLiteral("devpts"),   QStringLiteral("mqueue"),     QStringLiteral("debugfs"),
        QStringLiteral("tracefs"),  QStringLiteral("securityfs"), QStringLiteral("pstore"),
        QStringLiteral("efivarfs"), QStringLiteral("bpf"),        QStringLiteral("configfs"),
        QStringLiteral("fusectl"),  QStringLiteral("hugetlbfs"),  QStringLiteral("binfmt_misc"),
        QStringLiteral("nsfs"),     QStringLiteral("overlay"),    QStringLiteral("nfsd"),
    };
    const QString root = volume.rootPath();
    if (root == QLatin1String("/"))
        return false;
    for (const char *prefix : {"/proc", "/sys", "/dev", "/run/user", "/snap", "/var/lib/docker"}) {
        const QString folder = QString::fromLatin1(prefix);
        if (root == folder || root.startsWith(folder + QLatin1Char('/')))
            return true;
    }
    return pseudoTypes.contains(QString::fromLatin1(volume.fileSystemType()));
}

constexpr int DEPTH_ROLE = Qt::UserRole + 1;

// Indents each entry by its depth in the tree, as the classic folder list does.
class FolderIndentDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyleOptionViewItem indented(option);
        indented.rect.adjust(indent(option) * index.data(DEPTH_ROLE).toInt(), 0, 0, 0);
        QStyledItemDelegate::paint(painter, indented, index);
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        size.rwidth() += indent(option) * index.data(DEPTH_ROLE).toInt();
        return size;
    }

private:
    static int indent(const QStyleOptionViewItem &option) { return option.fontMetrics.height() * 2 / 3; }
};

} // namespace

DriveListBox::DriveListBox(QWidget *parent)
    : QComboBox(parent)
{
    setObjectName(QStringLiteral("Drive1"));
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(6);
    connect(this, &QComboBox::activated, this, &DriveListBox::onActivated);
    refresh();
    setDrive(QDir::currentPath());
}

QString DriveListBox::drive() const
{
    const QString root = rootPath();
    if (hasDriveLetter(root))
        return root.left(2).toLower();
    return root;
}

QString DriveListBox::rootPath() const
{
    const int index = currentIndex();
    if (index < 0 || index >= m_roots.size())
        return {};
    return QDir::toNativeSeparators(m_roots.at(index));
}

bool DriveListBox::setDrive(const QString &path)
{
    const QString target = QDir::fromNativeSeparators(normalisedFolder(path, QDir::currentPath()));
    int best = -1;
    qsizetype bestLength = -1;
    for (int i = 0; i < m_roots.size(); ++i) {
        const QString &root = m_roots.at(i);
        const Qt::CaseSensitivity cs = caseFor(root);
        const QString prefix = root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/');
        const bool holds = target.compare(root, cs) == 0 || target.startsWith(prefix, cs)
            || (target + QLatin1Char('/')).compare(prefix, cs) == 0;
        if (holds && root.size() > bestLength) {
            best = i;
            bestLength = root.size();
        }
    }
    if (best < 0)
        return false;
    setCurrentIndex(best);
    if (best != m_lastIndex) {
        m_lastIndex = best;
        emit Change();
    }
    return true;
}

void DriveListBox::refresh()
{
    const QString current = m_lastIndex >= 0 && m_lastIndex < m_roots.size() ? m_roots.at(m_lastIndex) : QString();
    QList<QStorageInfo> volumes;
    for (const QStorageInfo &volume : QStorageInfo::mountedVolumes()) {
        if (volume.isValid() && volume.isReady() && !isSystemVolume(volume))
            volumes.append(volume);
    }
    std::sort(volumes.begin(), volumes.end(), [](const QStorageInfo &a, const QStorageInfo &b) {
        return a.rootPath().compare(b.rootPath(), Qt::CaseInsensitive) < 0;
    });

    const QSignalBlocker blocker(this);
    clear();
    m_roots.clear();
    for (const QStorageInfo &volume : volumes) {
        QString root = QDir::fromNativeSeparators(volume.rootPath());
        if (m_roots.contains(root))
            continue;
        QString text = hasDriveLetter(root) ? root.left(2).toLower() : QDir::toNativeSeparators(root);
        const QString name = volume.name();
        if (!name.isEmpty())
            text += QStringLiteral(" [%1]").arg(name);
        addItem(style()->standardIcon(QStyle::SP_DriveHDIcon), text);
        m_roots.append(root);
    }
    m_lastIndex = current.isEmpty() ? -1 : static_cast<int>(m_roots.indexOf(current));
    setCurrentIndex(m_lastIndex);
}

void DriveListBox::showPopup()
{
    refresh();
    QComboBox::showPopup();
}

void DriveListBox::onActivated(int index)
{
    if (index == m_lastIndex)
        return;
    m_lastIndex = index;
    emit Change();
}

DirListBox::DirListBox(QWidget *parent)
    : QListWidget(parent)
{
    setObjectName(QStringLiteral("Dir1"));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setItemDelegate(new FolderIndentDelegate(this));
    setUniformItemSizes(true);
    connect(this, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem *item) { openRow(row(item)); });
    m_path = normalisedFolder(QDir::currentPath(), QDir::currentPath());
    rebuild();
}

bool DirListBox::setPath(const QString &folder)
{
    if (folder.trimmed().isEmpty())
        return false;
    const QString target = normalisedFolder(folder, m_path);
    if (!QFileInfo(target).isDir())
        return false;
    if (target.compare(m_path, caseFor(target)) == 0)
        return true;
    m_path = target;
    rebuild();
    emit Change();
    return true;
}

QString DirListBox::List(int index) const
{
    const int row = rowOf(index);
    return row < 0 ? QString() : m_entries.at(row);
}

int DirListBox::ListIndex() const
{
    const int row = currentRow();
    return row < 0 ? -1 : indexOf(row);
}

void DirListBox::setListIndex(int index)
{
    const int row = rowOf(index);
    if (row < 0)
        return;
    setCurrentRow(row);
    scrollToItem(item(row));
}

void DirListBox::refresh()
{
    const QString selected = currentRow() >= 0 ? m_entries.value(currentRow()) : QString();
    rebuild();
    const int row = static_cast<int>(m_entries.indexOf(selected));
    if (row >= 0)
        setCurrentRow(row);
}

void DirListBox::keyPressEvent(QKeyEvent *event)
{
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && currentRow() >= 0) {
        openRow(currentRow());
        return;
    }
    QListWidget::keyPressEvent(event);
}

void DirListBox::rebuild()
{
    QStringList ancestors;
    QDir walk(m_path);
    for (;;) {
        ancestors.prepend(QDir::toNativeSeparators(walk.absolutePath()));
        if (walk.isRoot() || !walk.cdUp())
            break;
    }
    // The top entry keeps the root's trailing separator ("C:\", "/").
    if (!ancestors.isEmpty() && !ancestors.first().endsWith(QDir::separator()))
        ancestors.first() += QDir::separator();
    ancestors.last() = m_path;

    QStringList names = QDir(m_path).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort);
    std::stable_sort(names.begin(), names.end(), [](const QString &a, const QString &b) {
        const int folded = a.compare(b, Qt::CaseInsensitive);
        return folded != 0 ? folded < 0 : a < b;
    });

    clear();
    m_entries.clear();
    m_ancestorCount = static_cast<int>(ancestors.size());
    m_subFolderCount = static_cast<int>(names.size());
    const QIcon open = style()->standardIcon(QStyle::SP_DirOpenIcon);
    const QIcon closed = style()->standardIcon(QStyle::SP_DirClosedIcon);
    for (int i = 0; i < m_ancestorCount; ++i) {
        const QString &folder = ancestors.at(i);
        const QString name = i == 0 ? folder : QFileInfo(folder).fileName();
        auto *entry = new QListWidgetItem(open, name, this);
        entry->setData(DEPTH_ROLE, i);
        entry->setToolTip(folder);
        m_entries.append(folder);
    }
    for (const QString &name : std::as_const(names)) {
        auto *entry = new QListWidgetItem(closed, name, this);
        entry->setData(DEPTH_ROLE, m_ancestorCount);
        m_entries.append(joinPath(m_path, name));
    }
    setCurrentRow(m_ancestorCount - 1);
    // The way up stays in sight as long as the list has room for it.
    scrollToTop();
    if (isVisible())
        scrollToItem(item(m_ancestorCount - 1), QAbstractItemView::EnsureVisible);
}

int DirListBox::rowOf(int index) const
{
    if (index >= m_subFolderCount || index < -m_ancestorCount)
        return -1;
    return m_ancestorCount + index;
}

int DirListBox::indexOf(int row) const
{
    return row - m_ancestorCount;
}

void DirListBox::openRow(int row)
{
    if (row < 0 || row >= m_entries.size())
        return;
    // A folder that vanished since the list was read drops out of it.
    if (!setPath(m_entries.at(row)))
        refresh();
}

QTreeWidgetItem *addVariationRow(QTreeWidget *grid, const QString &section)
{
    auto *item = new QTreeWidgetItem(grid);
    item->setText(0, section);
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren);
    item->setCheckState(0, Qt::Unchecked);
    return item;
}

} // namespace fleetwright
