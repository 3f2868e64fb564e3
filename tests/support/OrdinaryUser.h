#pragma once

#include <QtGlobal>

#ifdef Q_OS_LINUX
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

/**
 * While this lives, the thread has only the rights of an ordinary user, even if root runs the tests: it gives
 * up its effective capabilities (capabilities(7)). Does nothing on systems other than Linux.
 */
class OrdinaryUser
{
public:
    Q_DISABLE_COPY(OrdinaryUser)

#ifdef Q_OS_LINUX
    OrdinaryUser()
    {
        request(SYS_capget, before);
        __user_cap_data_struct none[] = {before[0], before[1]};
        none[0].effective = none[1].effective = 0;
        request(SYS_capset, none);
    }

    ~OrdinaryUser()
    {
        request(SYS_capset, before);
    }

private:
    static void request(long number, __user_cap_data_struct* capabilities)
    {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        if (syscall(number, &header, capabilities) != 0)
            qFatal("the capabilities of this thread cannot be changed");
    }

    __user_cap_data_struct before[2] = {};
#else
    OrdinaryUser() {}
#endif
};
