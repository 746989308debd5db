#include "fs/KorFileStatus.h"

CKorFileStatus::CKorFileStatus() : m_nSize(0), m_nAttribute(0) {}

CKorFileStatus::~CKorFileStatus() = default;
