#pragma once

#include <QColor>
#include <QDateTime>
#include <QElapsedTimer>
#include <QHash>
#include <QPixmap>
#include <QPoint>
#include <QWidget>

#include <memory>

class QKeyEvent;
class QPushButton;
class progressButton;
class progressLabel;
class progressProcess;
class progressStyle;

/// The progress dialog: a frameless window with ten slots for a text line or a bar, up to ten buttons, a
/// total bar and a "Hide" button. `receiver` fills it, shows and hides it, and replaces it by a copy.
///
/// A slot's flags are the whole truth about its content: the layout pass `ensureVisible()` derives every
/// widget's place and visibility from them. A bar takes its caption from the label of its slot; a slot
/// whose two flags are set shows the text line. Slot indices run from 0 to 9; an index outside them, or a
/// slot without widgets on a low screen, has no effect. Lengths are screen pixels.
///
/// Sources: content.cpp (slots and copies), layout.cpp (construction and layout pass), timing.cpp (runs,
/// ticks and percent), painting.cpp, input.cpp.
class CProgressDialog : public QWidget
{
    Q_OBJECT

public:
    enum { MAX_ENTRIES = 10 };

    /// Built hidden, from the appearance settings.
    CProgressDialog();
    ~CProgressDialog() override;

    void createBar(int id, const QString &text);
    void removeBar(int id);
    /// Returns `id`, whatever it is.
    int createText(int id, const QString &text);
    /// A bar of the slot shows the new text only after the next layout pass.
    void updateText(int id, const QString &text);
    void removeText(int id);
    void addButton(int id, const QString &text);
    void removeButton(int id);
    /// Sets a bar to `percent`, 0 to 100; -1 stands for a bar that would be cancelled and shows 100.
    void updateBar(int id, int percent);

    /// The run in progress will not be recorded.
    void willCancel() { m_cancelled = true; }
    /// Makes this dialog, just constructed, a copy of `src`; the run goes on in the copy.
    void copyFromDialog(const CProgressDialog &src);
    /// Centres the dialog on the screen.
    void movePosition();
    /// Applies the background image again, scaled to the dialog's size.
    virtual void reloadPixmap();

public slots:
    void buttonClicked();

protected:
    bool eventFilter(QObject *obj, QEvent *ev) override;
    void timerEvent(QTimerEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    struct layoutGrid;

    // content.cpp
    bool hasRow(int id) const;
    bool hasButton(int id) const;
    void clearRow(int id);
    void relayout();
    void copySlot(int id, const CProgressDialog &src);
    void copyGrid(const CProgressDialog &src);

    // layout.cpp
    void chooseScreenProfile();
    void createWidgets();
    void shareBarPalette();
    void fixSize();
    void loadBackground();
    /// The layout pass. Tells whether the dialog is in action: it shows a text line, a bar or a button.
    bool ensureVisible();
    int placeHideButton(const layoutGrid &grid);
    void placeTotalBar(const layoutGrid &grid, int hidew);
    bool placeRows(const layoutGrid &grid);
    bool placeButtons(const layoutGrid &grid);
    int buttonCellWidth(const layoutGrid &grid, int nbut) const;
    void focusFirstButton();

    // timing.cpp
    bool takeTimingStep(bool inAction);
    void startRun();
    void endRun();
    bool clockWasSet(qint64 seconds) const;
    void tick();
    void showEstimate(int elapsed);
    void showAverage();
    void captionTotalBar();
    /// Recomputes the average of the bars; a change of it is a snapshot of the run.
    void updatePercent();

    // painting.cpp
    void setBackgroundPixmap(const QPixmap &newpixmap);
    void scalePixmap(const QPixmap &newpixmap);

    // input.cpp
    void drag(QEvent *ev);
    QPushButton *concernedButton(QObject *obj, int &index) const;
    bool handleKey(QObject *obj, const QKeyEvent *ev);
    bool keyReleased(int key, QPushButton *pressedButton, int index);
    void focusNext(int nextButton);
    void focusPrevious(QPushButton *pressedButton, int index);
    bool activateButton(QPushButton *pressedButton);
    /// Sends the event of a shown slot button; false when `button` is none.
    bool sendClicked(const QObject *button);
    QPushButton *firstShownButton() const;
    QPushButton *lastShownButton() const;

    progressLabel *m_totalLabel = nullptr;
    progressProcess *m_totalBar = nullptr;
    progressButton *m_hideButton = nullptr;

    bool labelVisible[MAX_ENTRIES] = {};
    bool barVisible[MAX_ENTRIES] = {};
    /// Null from `maxBars` on.
    progressLabel *labels[MAX_ENTRIES] = {};
    progressProcess *bars[MAX_ENTRIES] = {};
    bool buttonVisible[MAX_ENTRIES] = {};
    /// Null from `maxButtons` on.
    QPushButton *buttons[MAX_ENTRIES] = {};

    QDateTime m_startTime;
    QDateTime m_stopTime;
    /// Runs beside `m_startTime`, to notice that the clock was set meanwhile.
    QElapsedTimer m_runClock;
    /// The next layout pass only places the children.
    bool m_justcopied = false;
    /// Id of the run's 1000 ms timer; -1 when none runs.
    int m_timerId = -1;

    /// Given to every bar; goes after them.
    std::unique_ptr<progressStyle> m_style;
    /// The background image at the dialog's size, or null.
    std::unique_ptr<QPixmap> m_bgpixmap;

    int m_desktopWidth;
    int m_desktopHeight;
    int m_framewidth = 4;
    QColor m_frameColor;
    QColor m_backgroundColor;
    /// Opacity of the background, 0 to 255.
    int m_alphaValue;
    int m_margin = 4;
    int m_xgap = 6;
    int m_ygap = 6;
    /// Slots that have widgets.
    int maxBars = MAX_ENTRIES;
    int maxButtons = MAX_ENTRIES;
    int m_buttonRows = 2;
    int m_Height = 0;
    int m_Width = 0;

    /// A run is in progress: the dialog had content at the end of the last layout pass.
    bool m_isActive = false;
    bool m_cancelled = false;
    /// Average of the bars; -1 before the first.
    int m_currentPercent = -1;

    /// Dragging: a mouse button is held on the dialog, and where it went down.
    bool m_buttonPressed = false;
    QPoint m_lastPoint;
    /// The keys that went down on this dialog and are still held: by scan code, as a key may have another
    /// name when it is released (Backtab is Tab once Shift is up).
    QHash<quint32, int> m_pressedKeys;
};
