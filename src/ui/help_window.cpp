#include "ui/help_window.h"

#include "platform/files.h"
#include "platform/format.h"
#include "shell/identity.h"
#include "ui/artwork.h"

#include <QAbstractTextDocumentLayout>
#include <QLineEdit>
#include <QPointer>
#include <QScrollBar>
#include <QShortcut>
#include <QSplitter>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr char kHelpOnHelpHeading[] = "How to use this help";
constexpr int kPositionRole = Qt::UserRole;
constexpr int kContentsLevels = 3; // deeper headings are not in the table
const QSize kSize(860, 620);
const QList<int> kParts = {250, 610};

std::string readDocument() {
    std::string text;
    const FileResult result = FILES_ReadAll(IDENTITY_HelpFile(), text);
    if (!result.ok()) {
        const std::string reason = result.reason.empty() ? "not found" : result.reason;
        return formatText("# Help\n\nThe help document %s cannot be read: %s.",
                          IDENTITY_HelpFile().c_str(), reason.c_str());
    }
    return text;
}

class HelpWindow : public QWidget {
public:
    HelpWindow() {
        setAttribute(Qt::WA_DeleteOnClose);
        setObjectName("HELP");
        setWindowTitle(QString("%1 Help").arg(kProductName));
        setWindowIcon(ART_Icon(Art::help));
        contents_ = new QTreeWidget(this);
        contents_->setObjectName("HelpContents");
        contents_->setHeaderLabel("Contents");
        contents_->setAccessibleName("Contents");
        page_ = new QTextBrowser(this);
        page_->setObjectName("HelpPage");
        page_->setAccessibleName("Help");
        page_->setOpenExternalLinks(true);
        find_ = new QLineEdit(this);
        find_->setObjectName("HelpFind");
        find_->setAccessibleName("Find in the help");
        find_->setPlaceholderText("Find in the help (Ctrl+F), Enter for the next place");
        find_->setClearButtonEnabled(true);
        auto* splitter = new QSplitter(this);
        splitter->addWidget(contents_);
        splitter->addWidget(page_);
        splitter->setSizes(kParts);
        splitter->setStretchFactor(1, 1);
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(find_);
        layout->addWidget(splitter, 1);
        resize(kSize);
        setTabOrder(contents_, page_);
        setTabOrder(page_, find_);
        connectParts();
        page_->document()->setMarkdown(QString::fromStdString(readDocument()));
        fillContents();
        contents_->setFocus();
    }

    void goTo(const QString& heading) {
        const auto found = contents_->findItems(heading, Qt::MatchExactly | Qt::MatchRecursive);
        QTreeWidgetItem* item = found.isEmpty() ? contents_->topLevelItem(0) : found.first();
        contents_->setCurrentItem(item);
    }

private:
    void connectParts() {
        connect(contents_, &QTreeWidget::currentItemChanged, this,
                [this](QTreeWidgetItem* item) { showItem(item); });
        connect(contents_, &QTreeWidget::itemClicked, this,
                [this](QTreeWidgetItem* item) { showItem(item); });
        connect(find_, &QLineEdit::returnPressed, this, [this] { findNext(); });
        connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, find_,
                [this] { find_->setFocus(); });
        connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this,
                [this] { close(); });
    }

    // One entry a heading, under the heading above it.
    void fillContents() {
        std::vector<QTreeWidgetItem*> above(kContentsLevels + 1, nullptr);
        const QTextDocument* document = page_->document();
        for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
            const int level = block.blockFormat().headingLevel();
            if (level < 1 || level > kContentsLevels) {
                continue;
            }
            QTreeWidgetItem* parent = above[static_cast<size_t>(level - 1)];
            auto* item =
                parent != nullptr ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(contents_);
            item->setText(0, block.text());
            item->setData(0, kPositionRole, block.position());
            item->setExpanded(level == 1);
            above[static_cast<size_t>(level)] = item;
        }
    }

    void showItem(const QTreeWidgetItem* item) {
        if (item == nullptr) {
            return;
        }
        const QTextBlock block = page_->document()->findBlock(item->data(0, kPositionRole).toInt());
        const QRectF place = page_->document()->documentLayout()->blockBoundingRect(block);
        page_->setTextCursor(QTextCursor(block));
        page_->verticalScrollBar()->setValue(static_cast<int>(place.top()));
    }

    void findNext() {
        if (page_->find(find_->text())) {
            return;
        }
        QTextCursor start(page_->document()); // once more from the top
        page_->setTextCursor(start);
        page_->find(find_->text());
    }

    QTreeWidget* contents_ = nullptr;
    QTextBrowser* page_ = nullptr;
    QLineEdit* find_ = nullptr;
};

QPointer<QWidget> window;

void show(const QString& heading) {
    if (!window) {
        window = new HelpWindow;
    }
    window->show();
    window->raise();
    window->activateWindow();
    static_cast<HelpWindow*>(window.data())->goTo(heading);
}

} // namespace

void HELP_ShowContents() {
    show({});
}

void HELP_ShowHelpOnHelp() {
    show(kHelpOnHelpHeading);
}

void HELP_Close() {
    delete window.data();
}
