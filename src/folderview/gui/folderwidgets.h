#pragma once

#include <QComboBox>
#include <QListWidget>
#include <QString>
#include <QStringList>

class QTreeWidget;
class QTreeWidgetItem;

namespace fleetwright {

// The drive list: the mounted volumes. On Windows an entry reads like "c: [System]" and drive() is "c:";
// elsewhere an entry is the mount point (with the volume's name in brackets if it has one) and drive() is the
// mount point. The list is read again each time it drops down.
class DriveListBox : public QComboBox
{
    Q_OBJECT

public:
    explicit DriveListBox(QWidget *parent = nullptr);

    QString drive() const;
    // Selects the volume that holds `path` ("c:", "C:\\Games", "/home/x"...). Emits Change() when the drive
    // really changes; returns false, and changes nothing, when no mounted volume holds it.
    bool setDrive(const QString &path);
    // The root folder of the selected volume ("C:\\" or "/media/disk").
    QString rootPath() const;

    void refresh();
    void showPopup() override;

signals:
    void Change();

private:
    void onActivated(int index);

    QStringList m_roots;
    int m_lastIndex = -1;
};

// The folder list: the current folder's ancestors from the root down, the folder itself, then its sub-folders
// sorted case-insensitively. Entries are numbered as the classic folder list did: the sub-folders from 0 to
// ListCount() - 1, the current folder -1, its parent -2, and so on up to the root. Paths use the platform's
// separators; a root keeps its trailing one ("C:\\", "/"). A double click or Enter on an entry opens it.
class DirListBox : public QListWidget
{
    Q_OBJECT

public:
    explicit DirListBox(QWidget *parent = nullptr);

    QString path() const { return m_path; }
    // Moves to `folder` (relative paths against the current folder; "c:" means that drive's root). Emits
    // Change() only when the path really changes. Returns false, and changes nothing, if the folder does not
    // exist.
    bool setPath(const QString &folder);

    // The full path of entry `index` (see above), or an empty string outside the list.
    QString List(int index) const;
    // The number of sub-folders.
    int ListCount() const { return m_subFolderCount; }
    // The selected entry; -1 (the current folder) after each move.
    int ListIndex() const;
    // Selects an entry without moving the path.
    void setListIndex(int index);

    // Reads the current folder's sub-folders again.
    void refresh();

signals:
    void Change();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void rebuild();
    int rowOf(int index) const;
    int indexOf(int row) const;
    void openRow(int row);

    QString m_path;
    QStringList m_entries;   // full paths, row by row
    int m_ancestorCount = 0; // rows of the root ... current folder
    int m_subFolderCount = 0;
};

// Appends a row to the variation grid (ListView1) with a check box and `section` as its first text; the other
// 16 texts are empty.
QTreeWidgetItem *addVariationRow(QTreeWidget *grid, const QString &section);

} // namespace fleetwright
