#pragma once

#include <QObject>

class QLineEdit;

/**
 * Makes a screen reader speak of an empty field that gets the focus by Tab. Qt selects the text first and
 * tells of the cursor before it tells of the focus; Orca then stays silent. An empty field has no text to
 * select, so this lets it get the focus without that.
 */
class AppSpokenField : public QObject
{
    Q_OBJECT

public:
    /** Watches this field, which becomes its parent. */
    explicit AppSpokenField(QLineEdit* field);

    bool eventFilter(QObject* watched, QEvent* event) override;
};
