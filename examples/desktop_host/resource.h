// Numbers of the resources and controls, for desktop_host.rc and the sources.
#ifndef DESKTOP_HOST_RESOURCE_H
#define DESKTOP_HOST_RESOURCE_H

#define IDI_APPLICATION_ICON 100
#define IDD_MAIN 101

#define IDC_STATUS 1001
#define IDC_PROGRESS 1002
#define IDC_SIGN_IN 1003
#define IDC_SIGN_OUT 1004
#define IDC_RENEW 1005
/* The Cancel button is IDCANCEL, so that Esc presses it. */
#define IDC_USER_LABEL 1006
#define IDC_USER 1007
#define IDC_TOKEN_LABEL 1008
#define IDC_TOKEN 1009
#define IDC_MESSAGE_LABEL 1010
#define IDC_MESSAGE 1011
#define IDC_COPY 1012
#define IDC_EVENTS_LABEL 1013
#define IDC_EVENTS 1014

#endif
