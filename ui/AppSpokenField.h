#pragma once

#include <QObject>

class QLineEdit;

/**
 * Makes a screen reader announce an empty field that gets the focus by Tab. On Tab, QLineEdit selects its
 * text and so reports the cursor before it reports the focus. Orca then reads a field with text, but not an
 * empty one. This has no text to select, so this class gives it the focus without selecting.
 */
class AppSpokenField : public QObject
{
    Q_OBJECT

public:
    /** Watches this field, which becomes its parent. */
    explicit AppSpokenField(QLineEdit* field);

    bool eventFilter(QObject* watched, QEvent* event) override;
};
