#include "ui/file_dialog.h"

#include "ui/modal.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QTreeView>

namespace {

constexpr int kDialogWidth = 110; // characters

FileResponder fileResponder;

// "Intel Hex file (*.hex)" in the form of the dialog, whose patterns are parted by blanks and for
// which "*.*" means a name with a dot.
QString nameFilter(const FileFilter& filter) {
    QString patterns = QString::fromStdString(filter.pattern).replace(';', ' ').simplified();
    patterns = patterns == "*.*" ? QString("*") : patterns;
    const QString label = QString::fromStdString(filter.text).section('(', 0, 0).trimmed();
    return QString("%1 (%2)").arg(label, patterns);
}

QStringList nameFilters(const FileRequest& request) {
    QStringList filters;
    for (const FileFilter& filter : request.filters) {
        filters << nameFilter(filter);
    }
    return filters;
}

// The field in which the user types the name.
QLineEdit* nameField(const QFileDialog& dialog) {
    return dialog.findChild<QLineEdit*>("fileNameEdit");
}

// What the name field says is taken as it stands. By itself the dialog goes by its list, in which a
// folder on the way to the typed file may still be selected.
class FileDialog : public QFileDialog {
public:
    using QFileDialog::QFileDialog;
    QString path() const { return typed_.isEmpty() ? selectedFiles().value(0) : typed_; }

protected:
    void accept() override {
        const QLineEdit* field = nameField(*this);
        const QFileInfo typed(directory(), field == nullptr ? QString() : field->text());
        const bool save = acceptMode() == AcceptSave;
        if (!typed.isDir() && (save ? typed.absoluteDir().exists() : typed.isFile())) {
            typed_ = QDir::cleanPath(typed.absoluteFilePath());
            done(Accepted);
        } else {
            QFileDialog::accept();
        }
    }

private:
    QString typed_;
};

void adaptExtension(QFileDialog& dialog, const FileRequest& request, int filterIndex) {
    QLineEdit* field = nameField(dialog);
    if (field == nullptr || filterIndex < 0 || field->text().isEmpty()) {
        return;
    }
    const FileFilter& filter = request.filters.at(static_cast<size_t>(filterIndex));
    field->setText(QString::fromStdString(
        FILEDIALOG_WithExtension(field->text().toStdString(), filter.pattern)));
}

void prepareSaving(QFileDialog& dialog, const FileRequest& request) {
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    QObject::connect(
        &dialog, &QFileDialog::filterSelected, &dialog, [&dialog, &request](const QString& chosen) {
            adaptExtension(dialog, request, static_cast<int>(nameFilters(request).indexOf(chosen)));
        });
}

void goToStart(QFileDialog& dialog, const std::string& startPath) {
    const QFileInfo start(QString::fromStdString(startPath));
    const bool known = !startPath.empty() && start.absoluteDir().exists();
    dialog.setDirectory(known ? start.absoluteDir() : QDir::current());
    if (known) {
        dialog.selectFile(start.fileName());
    }
}

// Names get what sizes, kinds and dates leave, which are shown whole.
void fitColumns(QFileDialog& dialog) {
    const int width = kDialogWidth * dialog.fontMetrics().averageCharWidth();
    dialog.resize(dialog.size().expandedTo(QSize(width, 0)));
    const auto* list = dialog.findChild<QTreeView*>("treeView");
    if (list == nullptr) {
        return;
    }
    list->header()->setStretchLastSection(false);
    list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
}

// A name typed without an extension gets the filter's, so that the open dialog will show it.
std::string chosenPath(const QString& path, const FileRequest& request, size_t filterIndex) {
    const bool isBare = request.save && !QFileInfo(path).fileName().contains('.');
    return isBare ? FILEDIALOG_WithExtension(path.toStdString(),
                                             request.filters.at(filterIndex).pattern)
                  : path.toStdString();
}

std::optional<FileChoice> show(const FileRequest& request, QWidget* owner) {
    FileDialog dialog(owner, QString::fromStdString(request.title));
    dialog.setOption(QFileDialog::DontUseNativeDialog); // the name field must be within reach
    dialog.setFileMode(QFileDialog::ExistingFile);
    const QStringList filters = nameFilters(request);
    dialog.setNameFilters(filters);
    if (request.save) {
        prepareSaving(dialog, request);
    }
    fitColumns(dialog);
    goToStart(dialog, request.startPath);
    if (request.save) {
        adaptExtension(dialog, request, 0);
    }
    if (dialog.exec() != QDialog::Accepted || dialog.path().isEmpty()) {
        return std::nullopt;
    }
    const auto filter =
        static_cast<size_t>(std::max<qsizetype>(filters.indexOf(dialog.selectedNameFilter()), 0));
    return FileChoice{chosenPath(dialog.path(), request, filter), filter};
}

} // namespace

std::optional<FileChoice> FILEDIALOG_Choose(const FileRequest& request) {
    const ModalScope modal;
    if (modal.isRefused()) {
        return std::nullopt;
    }
    return fileResponder ? fileResponder(request) : show(request, modal.owner());
}

std::string FILEDIALOG_WithExtension(const std::string& name, const std::string& pattern) {
    const std::string extension = pattern.starts_with("*.") ? pattern.substr(1) : std::string();
    if (extension.size() < 2 || extension.find_first_of("*?;") != std::string::npos) {
        return name;
    }
    const size_t start = name.rfind('/') + 1; // 0 when there is no folder
    return name.substr(0, name.find('.', start)) + extension;
}

void FILEDIALOG_SetResponder(FileResponder newResponder) {
    fileResponder = std::move(newResponder);
}
