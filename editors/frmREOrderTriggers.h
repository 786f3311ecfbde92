#pragma once
#include <QDialog>

class QPushButton;
class QTableWidget;
class clsAccount;

// The order in which an account's triggers are tried. Each move swaps a
// trigger with its neighbour at once, here and at the server.
class frmREOrderTriggers : public QDialog
{
    Q_OBJECT
public:
    explicit frmREOrderTriggers(clsAccount &Account, QWidget *parent = nullptr);

    clsAccount &Account;
    QTableWidget *Grid = nullptr;
    QPushButton *btnUp = nullptr;
    QPushButton *btnDown = nullptr;
    QPushButton *btnOK = nullptr;

    // Swaps the trigger of the row (0-based) with the one before or after it;
    // false at the edges or when the server refused.
    bool MoveUp(int Row);
    bool MoveDown(int Row);

private:
    bool Swap(int Row, int Other);
    void FillGrid(int Selected);
};
