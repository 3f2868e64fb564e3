#pragma once

#include <QString>

/** A symbolic link to the pseudo-terminal of the moment, at a path that stays; it goes away with this object.
 */
class PortLink
{
public:
    /** Where the link will stand; with an empty path no link is wanted and everything succeeds. */
    explicit PortLink(const QString& path)
        : linkPath(path)
    {
    }

    ~PortLink() { remove(); }

    Q_DISABLE_COPY(PortLink)

    QString path() const { return linkPath; }

    /** Makes or moves the link, in one step; leaves alone what is no such link. Empty, or why it failed. */
    QString pointTo(const QString& terminal);

    /** Takes the link away, unless it leads elsewhere by now. */
    void remove();

private:
    QString linkPath;
    QString target;
};
