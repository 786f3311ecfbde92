#pragma once
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A real HTTP server for the lookup and feed tests: Python's http.server in
// a process of its own on a free loopback port, serving the files of Folder.
// "/moved/NAME" redirects to "/NAME"; "/basic/NAME" and "/digest/NAME" ask
// for the user "watcher" with Password by Basic and by Digest log-on;
// "/status/CODE" answers with that status. Start() is false with Problem
// saying why when it does not come up.
class HttpPeer
{
public:
    QString Password = QStringLiteral("pa:ss w0rd");
    QString Problem;
    int Port = 0;

    ~HttpPeer() { Stop(); }

    QString Folder() const { return m_dir.path() + QStringLiteral("/site"); }
    QString Url(const QString &Path) const { return QStringLiteral("http://127.0.0.1:%1/%2").arg(Port).arg(Path); }

    // The file the server answers Name with.
    void Put(const QString &Name, const QByteArray &Content) const
    {
        QFile file(Folder() + u'/' + Name);
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(Content);
    }

    bool Start()
    {
        QDir().mkpath(Folder());
        const QString script = m_dir.filePath(QStringLiteral("peer.py"));
        QFile file(script);
        file.open(QIODevice::WriteOnly);
        file.write(Script());
        file.close();
        m_process.setProcessChannelMode(QProcess::SeparateChannels);
        m_process.start(QStringLiteral("python3"), {script, Folder(), Password});
        if (!m_process.waitForStarted(5000) || !m_process.waitForReadyRead(10000)) {
            Problem = QStringLiteral("python3 did not start the HTTP server: ") + QString::fromLocal8Bit(m_process.readAllStandardError());
            return false;
        }
        Port = m_process.readLine().trimmed().toInt();
        if (Port <= 0) {
            Problem = QStringLiteral("the HTTP server gave no port");
            return false;
        }
        return true;
    }

    void Stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill();
        m_process.waitForFinished(3000);
    }

private:
    static QByteArray Script()
    {
        return R"PY(
import hashlib, http.server, os, re, secrets, sys

folder, password = sys.argv[1], sys.argv[2]
user, realm, nonce = "watcher", "lookup", secrets.token_hex(16)

def md5(text):
    return hashlib.md5(text.encode()).hexdigest()

class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *args):
        pass

    def reply(self, code, body=b"", headers=()):
        self.send_response(code)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def basic(self):
        import base64
        given = self.headers.get("Authorization", "")
        return given == "Basic " + base64.b64encode((user + ":" + password).encode()).decode()

    def digest(self):
        given = self.headers.get("Authorization", "")
        if not given.startswith("Digest "):
            return False
        p = {k: a or b for k, a, b in re.findall(r'(\w+)=(?:"([^"]*)"|([^\s,]*))', given[7:])}
        ha1 = md5(user + ":" + realm + ":" + password)
        ha2 = md5("GET:" + p.get("uri", ""))
        want = md5(":".join([ha1, p.get("nonce", ""), p.get("nc", ""), p.get("cnonce", ""), p.get("qop", ""), ha2]))
        return p.get("username") == user and p.get("nonce") == nonce and p.get("response") == want

    def do_GET(self):
        parts = self.path.lstrip("/").split("/", 1)
        if parts[0] == "status":
            return self.reply(int(parts[1]), b"status page")
        if parts[0] == "moved":
            return self.reply(302, headers=[("Location", "/" + parts[1])])
        if parts[0] == "basic":
            if not self.basic():
                return self.reply(401, headers=[("WWW-Authenticate", 'Basic realm="%s"' % realm)])
            parts = parts[1:]
        elif parts[0] == "digest":
            if not self.digest():
                return self.reply(401, headers=[("WWW-Authenticate",
                                  'Digest realm="%s", qop="auth", nonce="%s", algorithm=MD5' % (realm, nonce))])
            parts = parts[1:]
        path = os.path.join(folder, os.path.basename(parts[0]))
        if not os.path.isfile(path):
            return self.reply(404, b"not found")
        kind = "text/html; charset=utf-8" if path.endswith(".html") else "application/xml" if path.endswith(".xml") else "text/plain"
        with open(path, "rb") as f:
            self.reply(200, f.read(), [("Content-Type", kind)])

server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
print(server.server_address[1], flush=True)
server.serve_forever()
)PY";
    }

    QTemporaryDir m_dir;
    QProcess m_process;
};
