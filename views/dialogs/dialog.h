#pragma once

#include "parameterinformation.h"

#include <QDialog>
#include <QTimer>
#include <QVariant>

class FramelessBox;
class Loading;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QStackedWidget;

/// Lets the user set one parameter. Made once and reused: initial(), setPresentValue(), show().
class Dialog : public QDialog
{
    Q_OBJECT

public:
    explicit Dialog(QWidget* parent = nullptr);

    /// Starts over with a record, which must outlive its stay in the dialog; null leaves nothing to set.
    /// What the user enters becomes the record's value text.
    void initial(ParameterInformation* record);
    /// Selects the option with the value that the data map has for the record; call it after initial().
    /// Other records show what was last set.
    void setPresentValue(int value);
    /// Name of the unit, sent with the request.
    void setDevName(QString name);
    /// Shows the page for a value (0), an option (1) or waiting (2).
    void switchPage(int index);
    /// The entry as the user sees it.
    QString getstrValue() const;
    /// The entry in the unit's own integers.
    int getrealValue() const;

public slots:
    /// Ok: checks the entry, sends it and closes after a while; or says what is wrong and stays open.
    void checkRange();
    void done(int result) override;

signals:
    /// A setting to be sent: type 1029 and the request. The receiver may delete the dialog.
    void postDEvent(int type, QMap<QString, QVariant> map);

private:
    enum Page
    {
        valuePage,
        optionPage,
        busyPage
    };

    QWidget* entryPage(const QString& caption, QWidget* entry, QLabel* unit);
    void buildLayout();
    bool isOptionMode() const;
    void focusEntry();
    void refuseEntry();
    void showBusy();
    QMap<QString, QVariant> request(int rawValue) const;

    ParameterInformation* m_record = nullptr;
    QString m_deviceName;
    bool m_isBusy = false; ///< from a request until the dialog closes
    QTimer m_closeTimer;

    FramelessBox* m_box;
    QLabel* m_title;
    QLabel* m_range;
    QLabel* m_valueUnit;
    QLabel* m_optionUnit;
    QLineEdit* m_value;
    QComboBox* m_options;
    Loading* m_loading;
    QStackedWidget* m_pages;
    QPushButton* m_ok = nullptr;
};
