#pragma once
#include <QStringList>
#include <QWidget>

class QPushButton;
class QTableWidget;

// A list of e-mail addresses with its Add, Edit and Delete buttons, as the
// user and folder editors show it. Add and Edit ask for the address.
class AddressGrid : public QWidget
{
    Q_OBJECT
public:
    AddressGrid(const QString &Heading, QWidget *parent = nullptr);

    QTableWidget *Grid = nullptr;
    QPushButton *btnAdd = nullptr;
    QPushButton *btnEdit = nullptr;
    QPushButton *btnDelete = nullptr;

    void SetAddresses(const QStringList &Addresses);
    // The rows that hold an address, trimmed.
    QStringList Addresses() const;

signals:
    // A row was added, changed or deleted by the buttons.
    void Changed();

private:
    // Asks for the address of a row; -1 adds one.
    void AskAddress(int Row);
    void AddRow(const QString &Address);

    QString m_heading;
};
