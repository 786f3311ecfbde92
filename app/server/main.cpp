// postvane-server [--data DIR] [--port N] [--bind ADDR] [--create-store]
#include "foundation/Startup.h"
#include "server/PostvaneServer.h"
#include "server/SignalWatcher.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>

int main(int argc, char **argv)
{
    SignalWatcher::Block();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("postvane-server"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The Postvane server: its HTTPS web service and configuration."));
    parser.addHelpOption();
    const QCommandLineOption data(QStringLiteral("data"),
                                  QStringLiteral("The data folder (default $XDG_DATA_HOME/Postvane)."),
                                  QStringLiteral("DIR"));
    const QCommandLineOption port(QStringLiteral("port"),
                                  QStringLiteral("The port to listen on (default WebAccessPort, 8855; 0 for any free port)."),
                                  QStringLiteral("N"));
    const QCommandLineOption bind(QStringLiteral("bind"),
                                  QStringLiteral("The address to listen on (default WebAccessBindTo, or every address)."),
                                  QStringLiteral("ADDR"));
    const QCommandLineOption create(QStringLiteral("create-store"),
                                    QStringLiteral("Make the data folder, its store and first user, then end."));
    parser.addOptions({data, port, bind, create});
    parser.process(app);

    ServerOptions options;
    options.DataFolder = parser.value(data);
    options.BindTo = parser.value(bind);
    options.CreateOnly = parser.isSet(create);
    if (parser.isSet(port)) {
        bool number = false;
        options.Port = parser.value(port).toInt(&number);
        if (!number || options.Port < 0 || options.Port > 65535) {
            std::fprintf(stderr, "postvane-server: --port needs a number from 0 to 65535.\n");
            return 2;
        }
    }

    SetStartupProperties(app.arguments());
    PostvaneServer server;
    if (!server.Start(options))
        return 1;
    if (options.CreateOnly)
        return 0;
    SignalWatcher watcher;
    QObject::connect(&watcher, &SignalWatcher::Stop, &app, [&server] {
        server.Stop();
        QCoreApplication::quit();
    });
    return app.exec();
}
