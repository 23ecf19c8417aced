#include "surfaces/capture/capturecardmodel.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** A key that types: text with no control character in it. */
bool isPrintable(const QString &text)
{
    if (text.isEmpty())
        return false;
    for (const QChar c : text) {
        if (c.category() == QChar::Other_Control || c.category() == QChar::Other_Format)
            return false;
    }
    return true;
}

} // namespace

CaptureCardModel::CaptureCardModel(QObject *parent) : QObject(parent) {}

void CaptureCardModel::reset(const LibraryItem &item, const QImage &preview, bool bound)
{
    m_focus = Field::title;
    m_item = item;
    m_title = item.title.value_or(QString());
    m_query.clear();
    m_preview = preview;
    ++m_previewSerial;
    m_bound = bound;
    m_pendingTags.clear();
    m_chosen.reset();
    m_tagDraft.clear();
    m_highlighted = 0;
    m_titleUntouched = true;
    m_displacedChoice.reset();
    Q_EMIT changed();
}

void CaptureCardModel::bindItem(const LibraryItem &item)
{
    m_item = item;
    m_bound = true;
    if (m_titleUntouched && !item.title.value_or(QString()).isEmpty())
        m_title = *item.title;
    Q_EMIT changed();
}

void CaptureCardModel::setCollections(const QList<CardCollection> &collections)
{
    m_collections = collections;
    m_highlighted = 0;
    Q_EMIT changed();
}

bool CaptureCardModel::handleKey(int key, Qt::KeyboardModifiers modifiers, const QString &text)
{
    const bool isReturn = key == Qt::Key_Return || key == Qt::Key_Enter;
    // Control stands where the other desktop has command: Control-Return finishes.
    if (isReturn && modifiers.testFlag(Qt::ControlModifier)) {
        finish();
        return true;
    }
    if (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;

    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (onSubmitField)
            onSubmitField();
        else
            submitField();
        return true;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        if (m_focus == Field::tags)
            commitTagDraft();
        moveFocus(key == Qt::Key_Backtab || modifiers.testFlag(Qt::ShiftModifier) ? -1 : 1);
        return true;
    case Qt::Key_Backspace:
        backspace();
        return true;
    case Qt::Key_Escape:
        cancel();
        return true;
    case Qt::Key_Down:
        m_highlighted = std::min(m_highlighted + 1, std::max(suggestionCount() - 1, 0));
        Q_EMIT changed();
        return true;
    case Qt::Key_Up:
        m_highlighted = std::max(m_highlighted - 1, 0);
        Q_EMIT changed();
        return true;
    default:
        break;
    }
    if (!isPrintable(text))
        return false;
    typeCharacter(text);
    return true;
}

void CaptureCardModel::typeCharacter(const QString &text)
{
    switch (m_focus) {
    case Field::title:
        if (m_titleUntouched) {
            m_title = text;
            m_titleUntouched = false;
        } else {
            m_title += text;
        }
        break;
    case Field::collection:
        m_query += text;
        m_highlighted = 0;
        break;
    case Field::tags:
        // A comma ends a tag, as it does in every tag field.
        if (text == u","_s)
            commitTagDraft();
        else
            m_tagDraft += text;
        break;
    }
    Q_EMIT changed();
}

void CaptureCardModel::backspace()
{
    switch (m_focus) {
    case Field::title:
        if (m_titleUntouched) {
            m_title.clear();
            m_titleUntouched = false;
        } else {
            m_title.chop(1);
        }
        break;
    case Field::collection:
        if (m_query.isEmpty())
            m_chosen.reset();
        else
            m_query.chop(1);
        m_highlighted = 0;
        break;
    case Field::tags:
        m_tagDraft.chop(1);
        break;
    }
    Q_EMIT changed();
}

void CaptureCardModel::moveFocus(int step)
{
    const int next = (int(m_focus) + step + 3) % 3;
    m_focus = Field(next);
    m_highlighted = 0;
    Q_EMIT changed();
}

void CaptureCardModel::setFocusField(const QString &field)
{
    Field next = Field::title;
    if (field == u"collection")
        next = Field::collection;
    else if (field == u"tags")
        next = Field::tags;
    if (m_focus == Field::tags && next != Field::tags)
        commitTagDraft();
    m_focus = next;
    m_highlighted = 0;
    Q_EMIT changed();
}

void CaptureCardModel::submitField()
{
    switch (m_focus) {
    case Field::title:
        moveFocus(1);
        return;
    case Field::collection:
        // Return takes the highlighted row; with nothing to take, an earlier choice stays.
        if (suggestionCount() > 0 && (!m_query.trimmed().isEmpty() || !m_chosen)) {
            chooseSuggestion(m_highlighted);
        } else if (!m_chosen && m_displacedChoice) {
            m_chosen = m_displacedChoice;
            m_displacedChoice.reset();
        }
        m_focus = Field::tags;
        m_highlighted = 0;
        Q_EMIT changed();
        return;
    case Field::tags:
        // Return on an empty tag field is the last step: the card is done.
        if (m_tagDraft.trimmed().isEmpty()) {
            finish();
            return;
        }
        commitTagDraft();
        return;
    }
}

void CaptureCardModel::commitTagDraft()
{
    const QString tag = m_tagDraft.trimmed();
    m_tagDraft.clear();
    if (!tag.isEmpty() && !m_pendingTags.contains(tag, Qt::CaseInsensitive))
        m_pendingTags.append(tag);
    Q_EMIT changed();
}

void CaptureCardModel::chooseSuggestion(int row)
{
    const QList<Suggestion> rows = suggestionRows();
    if (row < 0 || row >= rows.size())
        return;
    const Suggestion &picked = rows.at(row);
    m_chosen = ChosenCollection{picked.id, picked.name, false};
    m_displacedChoice.reset();
    m_query.clear();
    m_highlighted = 0;
    Q_EMIT changed();
}

void CaptureCardModel::chooseDifferentCollection()
{
    if (m_chosen)
        m_displacedChoice = m_chosen;
    m_chosen.reset();
    m_query.clear();
    m_focus = Field::collection;
    m_highlighted = 0;
    Q_EMIT changed();
}

void CaptureCardModel::setChosen(const std::optional<ChosenCollection> &chosen)
{
    m_chosen = chosen;
    Q_EMIT changed();
}

void CaptureCardModel::removeTag(int index)
{
    if (index < 0 || index >= m_pendingTags.size())
        return;
    m_pendingTags.removeAt(index);
    Q_EMIT changed();
}

void CaptureCardModel::finish()
{
    if (onFinish)
        onFinish();
}

void CaptureCardModel::cancel()
{
    if (onCancel)
        onCancel();
}

QList<CaptureCardModel::Suggestion> CaptureCardModel::suggestionRows() const
{
    QList<Suggestion> rows;
    const QString wanted = m_query.trimmed();
    bool exact = false;
    for (const CardCollection &collection : m_collections) {
        if (wanted.isEmpty() || collection.name.contains(wanted, Qt::CaseInsensitive))
            rows.append({collection.id, collection.name, false});
        exact = exact || collection.name.compare(wanted, Qt::CaseInsensitive) == 0;
    }
    if (!wanted.isEmpty() && !exact)
        rows.append({QString(), wanted, true});
    return rows;
}

int CaptureCardModel::suggestionCount() const
{
    return int(suggestionRows().size());
}

QVariantList CaptureCardModel::suggestions() const
{
    QVariantList list;
    for (const Suggestion &row : suggestionRows())
        list.append(QVariantMap{{u"id"_s, row.id}, {u"name"_s, row.name}, {u"create"_s, row.create}});
    return list;
}

QString CaptureCardModel::focusName() const
{
    switch (m_focus) {
    case Field::title:
        return u"title"_s;
    case Field::collection:
        return u"collection"_s;
    case Field::tags:
        return u"tags"_s;
    }
    return {};
}

QString CaptureCardModel::domain() const
{
    QString host = QUrl(sourceURL()).host().toLower();
    if (host.startsWith(u"www."))
        host.remove(0, 4);
    return host;
}

} // namespace kivo
