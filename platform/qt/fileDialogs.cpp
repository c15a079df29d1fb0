#include "platform/qt/fileDialogs.h"

#include "base/failure.h"
#include "base/text.h"
#include "platform/qt/stacking.h"
#include "platform/qt/text.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QScreen>
#include <QStandardPaths>
#include <QTreeView>

namespace platform {

namespace {

// "Bin File (*.bin)|*.bin||" as a list for the toolkit: "Bin File (*.bin)". It reads the patterns in the brackets.
QStringList nameFilters(const std::string& filter) {
    const QStringList parts = fromUtf8(filter).split('|');
    QStringList filters;
    for (qsizetype at = 0; at + 1 < parts.size() && !parts[at].isEmpty(); at += 2) {
        const QString description = parts[at].section('(', 0, 0).trimmed();
        filters += description + " (" + QString(parts[at + 1]).replace(';', ' ') + ')';
    }
    return filters;
}

bool isInHiddenFolder(const QString& path) {
    const QFileInfo folder(path);
    const QString above = folder.absolutePath();
    const bool top = folder.isRoot() || above.size() >= path.size();
    return !top && (folder.isHidden() || isInHiddenFolder(above));
}

QString folderOfLastFile; // of this run

// The dialog's folder. In place of one that the system hides from the operator, as it does that of an installation for
// one user: the folder of the last file, or the operator's documents.
QString firstFolder(const FileDialog& dialog) {
    const QString folder = fromUtf8(dialog.initialDirectory);
    if (!isInHiddenFolder(QFileInfo(folder).absoluteFilePath())) {
        return folder;
    }
    return folderOfLastFile.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)
                                      : folderOfLastFile;
}

// Large enough for a path and the columns in the desktop's font, limited by the screen.
QSize preferredSize(const QFileDialog& dialog) {
    const QFontMetrics font = dialog.fontMetrics();
    const QSize size(90 * font.averageCharWidth(), 25 * font.lineSpacing());
    return size.expandedTo(dialog.size()).boundedTo(dialog.screen()->availableSize() * 9 / 10);
}

// The toolkit's columns are narrower than their contents.
void fitColumns(const QFileDialog& dialog) {
    if (const auto* list = dialog.findChild<QTreeView*>()) {
        list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    }
}

// Removes blanks at the ends of the name before it asks whether to overwrite that file.
class NameDialog : public QFileDialog {
  public:
    void accept() override {
        if (auto* name = findChild<QLineEdit*>()) {
            name->setText(fromUtf8(trim(toUtf8(name->text()))));
        }
        QFileDialog::accept();
    }
};

} // namespace

void showFileDialog(FileDialog& dialog, FileDialogKind kind) {
    NameDialog shown;
    shown.setOption(QFileDialog::DontUseNativeDialog);
    shown.setOption(QFileDialog::DontConfirmOverwrite, (dialog.flags & FileDialog::overwritePrompt) == 0);
    shown.setFileMode(QFileDialog::AnyFile);
    shown.setAcceptMode(kind == FileDialogKind::open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    shown.setWindowTitle(kind == FileDialogKind::open ? "Open" : "Save As");
    shown.setNameFilters(nameFilters(dialog.filter));
    shown.setDirectory(firstFolder(dialog));
    if (!dialog.fileName.empty()) {
        shown.selectFile(fromUtf8(dialog.fileName));
    }
    shown.resize(preferredSize(shown));
    fitColumns(shown);
    setParentWindow(shown);
    if (shown.exec() == QDialog::Accepted) {
        dialog.fileName = toUtf8(shown.selectedFiles().value(0));
        folderOfLastFile = shown.directory().absolutePath();
    } else if (dialog.cancelError) {
        throw Failure(failureNumber::dialogCancelled, "Cancel was selected");
    }
}

} // namespace platform
