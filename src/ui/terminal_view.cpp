// The terminal: its two forms, the row of tools above them and the bars below.

#include "platform/files.h"
#include "shell/front_end.h"
#include "shell/session.h"
#include "shell/terminal_log.h"
#include "shell/terminal_sender.h"
#include "ui/find_bar.h"
#include "ui/terminal_bars.h"
#include "ui/terminal_pane.h"
#include "ui/terminal_simple.h"
#include "ui/terminal_tools.h"
#include "ui/view_widget.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace {

constexpr int kTellMs = 250; // whether the log is still written

class TerminalView final : public ViewWidget {
public:
    explicit TerminalView(QWidget* parent)
        : ViewWidget(parent), settings_(TERMSETTINGS_Read()), simple_(new TerminalSimple(this)),
          pane_(new TerminalPane(this, [this] { tools_->focusFirst(); })),
          tools_(new TerminalTools(this, settings_, deeds())),
          findBar_(FINDBAR_Create(
              this,
              [this](const std::vector<uint8_t>& pattern, bool forward) {
                  return pane_->find(pattern, forward);
              },
              [this] { pane_->setFocus(); })),
          hexBar_(HEXBAR_Create(
              this, [this] { SENDBAR_Follow(sendBar_); }, [this] { pane_->setFocus(); })),
          sendBar_(SENDBAR_Create(this, [this] { pane_->setFocus(); })) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(tools_);
        layout->addLayout(forms_, 1);
        for (QWidget* bar : {findBar_, hexBar_, sendBar_}) {
            layout->addWidget(bar);
        }
        forms_->addWidget(simple_);
        forms_->addWidget(pane_);
        FINDBAR_PreferText(findBar_);
        simple_->addFormItem(tools_->formItem());
        connect(pane_, &QWidget::customContextMenuRequested, this,
                [this](const QPoint& place) { tools_->menu().popup(pane_->mapToGlobal(place)); });
        pane_->setSettings(settings_);
        applyForm();
        connect(&timer_, &QTimer::timeout, this, [this] { tellLog(); });
    }

    void refresh() override {
        if (settings_.onePane) {
            pane_->refresh();
        } else {
            simple_->refresh();
        }
    }

    // Ready to type, but for a click on a tool and where a bar is being filled in.
    void activated() override {
        const bool inBar = qobject_cast<QLineEdit*>(focusWidget()) != nullptr;
        if (!settings_.onePane) {
            simple_->activate();
        } else if (!inBar && QApplication::mouseButtons() == Qt::NoButton) {
            pane_->setFocus();
        }
    }

protected:
    void showEvent(QShowEvent* event) override {
        ViewWidget::showEvent(event);
        follow(true);
    }

    void hideEvent(QHideEvent* event) override {
        ViewWidget::hideEvent(event);
        follow(false);
    }

    void keyPressEvent(QKeyEvent* event) override { // that a tool has not taken
        if (event->key() == Qt::Key_Escape) {
            focusProxy()->setFocus();
        } else {
            ViewWidget::keyPressEvent(event);
        }
    }

private:
    TerminalDeeds deeds() {
        return {[this](const TerminalSettings& settings) { choose(settings); },
                [this] { pane_->copy(); },
                [this] { pane_->selectAll(); },
                [this] { pane_->clearShown(); },
                [this] { openBar(findBar_, FINDBAR_Open); },
                [this] { sendFile(); },
                [this] { openBar(hexBar_, HEXBAR_Open); },
                [this] { turnLog(); }};
    }

    void choose(const TerminalSettings& settings) {
        const bool otherForm = settings.onePane != settings_.onePane;
        settings_ = settings;
        TERMSETTINGS_Write(settings);
        pane_->setSettings(settings);
        if (otherForm) {
            applyForm();
            follow(isVisible());
            focusProxy()->setFocus();
        }
    }

    void applyForm() {
        QWidget* form = settings_.onePane ? static_cast<QWidget*>(pane_) : simple_;
        forms_->setCurrentWidget(form);
        setFocusProxy(form);
        tools_->setVisible(settings_.onePane);
        findBar_->hide();
        hexBar_->hide();
    }

    // What is not seen costs nothing.
    void follow(bool seen) {
        pane_->setShown(seen && settings_.onePane);
        simple_->setShown(seen && !settings_.onePane);
        tellLog();
        if (seen) {
            timer_.start(kTellMs);
        } else {
            timer_.stop();
        }
    }

    void openBar(QWidget* bar, void (*open)(QWidget*)) {
        for (QWidget* other : {findBar_, hexBar_}) {
            other->setVisible(other == bar);
        }
        open(bar);
    }

    void sendFile() {
        const auto choice = FRONTEND_Get().chooseFile(
            {false, "Send File", {{"All files (*)", "*"}}, SESSION_Get().programPath});
        if (choice && TERMSEND_File(choice->path)) {
            SENDBAR_Follow(sendBar_);
        }
    }

    void turnLog() {
        if (!TERMLOG_Path().empty()) {
            TERMLOG_Stop();
        } else if (const auto choice = FRONTEND_Get().chooseFile(
                       {true,
                        "Log to File",
                        {{"Log files (*.log)", "*.log"}, {"All files (*)", "*"}},
                        FILES_KeptFolder(Kept::state) + "terminal.log"})) {
            TERMLOG_Start(choice->path);
        }
        tellLog();
    }

    void tellLog() { tools_->tellLog(QString::fromStdString(TERMLOG_Path())); }

    TerminalSettings settings_;
    TerminalSimple* simple_;
    TerminalPane* pane_;
    TerminalTools* tools_;
    QWidget* findBar_;
    QWidget* hexBar_;
    QWidget* sendBar_;
    QStackedLayout* forms_ = new QStackedLayout;
    QTimer timer_{this};
};

} // namespace

ViewWidget* TERMINALVIEW_Create(QWidget* parent) {
    return new TerminalView(parent);
}
