#pragma once

#include "zuvidanmakuitem.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <vector>

struct XML_ParserStruct;

// Reads a danmaku document: a list of "d" elements, each with its "p"
// attribute (the comma-separated parameters) and the comment's text as
// character content. Everything else in the document is ignored.
//
// A streaming (SAX) reader drives the three callbacks, so a document of
// hundreds of thousands of comments is read in one pass with a few kilobytes
// of parser state. Per comment there are two allocations at most: its text
// and its id. Items come out in document order; sortByTime orders them for
// the overlay.
class ZuviDanmakuXMLParser
{
public:
    ZuviDanmakuXMLParser();
    ~ZuviDanmakuXMLParser();
    ZuviDanmakuXMLParser(const ZuviDanmakuXMLParser &) = delete;
    ZuviDanmakuXMLParser &operator=(const ZuviDanmakuXMLParser &) = delete;

    // Reads a whole document. False when it is not well-formed XML; the items
    // read before the fault are kept and errorString() says what went wrong.
    bool parse(const QByteArray &data);
    // The document is handed to the reader in pieces of this many bytes, so
    // the reader never copies the whole body (and tests can make entities
    // and multi-byte characters straddle two pieces).
    void setChunkSize(int bytes) { m_chunkSize = bytes > 0 ? bytes : kDefaultChunkSize; }

    const QList<ZuviDanmakuItem> &items() const { return m_items; }
    QList<ZuviDanmakuItem> takeItems() { return std::exchange(m_items, {}); }
    QString errorString() const { return m_errorString; }
    bool isReadingDanmaku() const { return m_readingDanmaku; }

    // Stable, by time ascending.
    static void sortByTime(QList<ZuviDanmakuItem> &items);

    // The reader's callbacks; names arrive without namespace, attributes as
    // a null-terminated list of name/value pairs, text in chunks of whole
    // UTF-8 characters as it comes.
    void didStartElement(const char *name, const char **attributes);
    void foundCharacters(const char *text, int length);
    void didEndElement(const char *name);

private:
    static constexpr int kDefaultChunkSize = 64 * 1024;

    void appendCurrentItem();
    static void startElementHandler(void *userData, const char *name, const char **attributes);
    static void endElementHandler(void *userData, const char *name);
    static void characterDataHandler(void *userData, const char *text, int length);

    QList<ZuviDanmakuItem> m_items;
    QString m_errorString;
    int m_chunkSize = kDefaultChunkSize;
    XML_ParserStruct *m_reader = nullptr;

    bool m_readingDanmaku = false;
    // The comment being read: its parameters are taken at the start tag, its
    // text collects (already decoded) and becomes one exactly-sized string at
    // the end.
    ZuviDanmakuItem m_current;
    std::vector<char16_t> m_text;
    qsizetype m_textLength = 0;
};
