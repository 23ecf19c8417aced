#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * A line glyph of Kivo's own set, drawn from its path on a 16-unit grid with round ends, stroked
 * in one colour so it follows the theme. It paints a picture like any other item, so every
 * renderer draws it in its place and on whichever thread draws the window.
 */
class GlyphShape : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT

    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    /** Drawn when `name` is not in the set (a symbol the set does not have). */
    Q_PROPERTY(QString fallback READ fallback WRITE setFallback NOTIFY fallbackChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    /** In units of the 16-unit grid, so it scales with the glyph. */
    Q_PROPERTY(qreal lineWidth READ lineWidth WRITE setLineWidth NOTIFY lineWidthChanged)

public:
    explicit GlyphShape(QQuickItem *parent = nullptr);

    /** The path drawn for `name`, else for `fallback`; empty when the set has neither. */
    [[nodiscard]] static QString pathFor(const QString &name, const QString &fallback);

    [[nodiscard]] QString name() const { return m_name; }
    void setName(const QString &name);
    [[nodiscard]] QString fallback() const { return m_fallback; }
    void setFallback(const QString &fallback);
    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor &color);
    [[nodiscard]] qreal lineWidth() const { return m_lineWidth; }
    void setLineWidth(qreal lineWidth);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void nameChanged();
    void fallbackChanged();
    void colorChanged();
    void lineWidthChanged();

private:
    QString m_name;
    QString m_fallback;
    QColor m_color = Qt::black;
    qreal m_lineWidth = 1.5;
};

} // namespace kivo
