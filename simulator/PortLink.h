#pragma once

#include <QString>

/**
 * A symbolic link under a name of the user's choice to the pseudo-terminal of the moment, so that a
 * controller finds the camera at the same path every time. The link goes away with this object.
 */
class PortLink
{
public:
    /** `path` is where the link will stand; an empty one means that no link is wanted and everything
     * succeeds. */
    explicit PortLink(const QString& path);
    ~PortLink();
    PortLink(const PortLink&) = delete;
    PortLink& operator=(const PortLink&) = delete;

    QString path() const { return linkPath; }

    /**
     * Makes the link lead to the pseudo-terminal `terminal`, in one step: no moment without a link if there
     * was one. A link to another pseudo-terminal is replaced, anything else at that path is left alone.
     * Returns an empty text on success, otherwise the reason of the failure.
     */
    QString pointTo(const QString& terminal);

    /** Takes the link away, unless it leads elsewhere by now. */
    void remove();

private:
    QString linkPath;
    QString target;
};
