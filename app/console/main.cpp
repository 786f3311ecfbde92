#include "editors/Editors.h"
#include "workbench/Main.h"

#include <QApplication>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    RegisterEditors();
    return Main(app);
}
