#pragma once

namespace Tools {

// Names of the entries in the header of the family's model and result documents; constants.
struct MdmlConstants {
    static constexpr const char* ResultData = "ResultData";
    static constexpr const char* ApplicationName = "ApplicationName";
    static constexpr const char* ApplicationGroup = "ApplicationGroup";
    static constexpr const char* Version = "Version";
    static constexpr const char* Build = "Build";
    static constexpr const char* Layout = "Layout";
    static constexpr const char* LayoutVersion = "LayoutVersion";
    static constexpr const char* MinLayoutVersion = "MinLayoutVersion";
    static constexpr const char* IsFixed = "IsFixed";

    // The program that wrote the document.
    static constexpr const char* GlobalInfo = "GlobalInfo";
    static constexpr const char* GlobalInfo_ProgName = "ProgName";
    static constexpr const char* GlobalInfo_ProgramType = "ProgramType";
    static constexpr const char* GlobalInfo_VOKCompany = "VOKCompany";
    static constexpr const char* GlobalInfo_ProgramVersion = "ProgramVersion";
    static constexpr const char* GlobalInfo_ProgramBuild = "ProgramBuild";

    // The project that the document belongs to; `This` is the name of the group itself.
    struct ProjectInfo {
        static constexpr const char* This = "ProjectInfo";
        static constexpr const char* ProjectDescription = "ProjectDescription";
        static constexpr const char* ProjectName = "ProjectName";
        static constexpr const char* ProjectKey = "ProjectKey";
        static constexpr const char* ProjectPosition = "ProjectPosition";
        static constexpr const char* ProjectAddress = "ProjectAddress";
        static constexpr const char* ProjectMember = "ProjectMember";
        static constexpr const char* Author = "Author";
        static constexpr const char* InputPath = "InputPath";
        static constexpr const char* InputFile = "InputFile";
    };
};

}
