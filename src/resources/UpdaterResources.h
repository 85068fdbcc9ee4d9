/* Resource numbers of the updater, shared by its resource script and its code.
   Plain #defines: the resource compiler reads this file too. */
#pragma once

#define IDD_UPDATER_DIALOG 102
#define IDR_MAINFRAME 128

#define IDC_UPDATE_PROGRESS 1000
#define IDC_UPDATE_STATUS 1001

/* Product string table */
#define IDS_PRODUCT_NAME 129
#define IDS_PRODUCT_COMPANY_NAME 130
#define IDS_PRODUCT_EXECUTABLE 131
#define IDS_PRODUCT_URL 132
#define IDS_DEFAULT_DOWNLOAD_URL 134
#define IDS_BUNDLE_NAME 136
#define IDS_UPDATE_PUBLIC_KEY 137
