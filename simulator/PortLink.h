#pragma once

#include <QString>

/** A symbolic link with a fixed path to the current pseudo-terminal. Removed with this object. */
class PortLink
{
public:
    /** Sets the path of the link. With an empty path no link is made, and all functions succeed. */
    explicit PortLink(const QString& path)
        : linkPath(path)
    {
    }

    ~PortLink() { remove(); }

    Q_DISABLE_COPY(PortLink)

    QString path() const { return linkPath; }

    /** Creates or replaces the link atomically. Replaces nothing but a link to a terminal of the same kind.
     * Returns the reason of a failure, else an empty text. */
    QString pointTo(const QString& terminal);

    /** Removes the link, unless it points elsewhere by now. */
    void remove();

private:
    QString linkPath;
    QString target;
};
