<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>CFileDialog</name>
    <message>
        <source>Hint</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>%1 already exists.
Do you want to replace it?</source>
        <translation>%1 已存在。
是否替换？</translation>
    </message>
</context>
<context>
    <name>MessageRow</name>
    <message>
        <source>Error</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>警告</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>信息</translation>
    </message>
    <message>
        <source> OK </source>
        <translation> 确定 </translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
</context>
<context>
    <name>QAboutDlg</name>
    <message>
        <source>About</source>
        <translation>关于</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>名称：</translation>
    </message>
    <message>
        <source>KOLT CAPTURE(Linux)</source>
        <translation>KOLT CAPTURE(Linux)</translation>
    </message>
    <message>
        <source>Version:</source>
        <translation>版本：</translation>
    </message>
    <message>
        <source>V%1 build%2</source>
        <translation>V%1 build%2</translation>
    </message>
</context>
<context>
    <name>QAddCameraWidget</name>
    <message>
        <source>Add Remote Camera</source>
        <translation>添加远程相机</translation>
    </message>
    <message>
        <source>Camera IP Address:</source>
        <translation>相机 IP 地址：</translation>
    </message>
    <message>
        <source>Please make sure the IP address is valid.</source>
        <translation>请确认 IP 地址有效。</translation>
    </message>
    <message>
        <source>Failed to add the camera. Please make sure the
camera has been connected to the network.</source>
        <translation>添加相机失败。请确认
相机已连接到网络。</translation>
    </message>
</context>
<context>
    <name>QCamera</name>
    <message>
        <source>The GigE driver is enabled.</source>
        <translation>GigE 驱动已启用。</translation>
    </message>
    <message>
        <source>The GigE driver is not enabled or uninstalled.</source>
        <translation>GigE 驱动未启用或未安装。</translation>
    </message>
    <message>
        <source>Failed to save the captured image.(%1)</source>
        <translation>保存抓拍图像失败。（%1）</translation>
    </message>
    <message>
        <source>Images captured.</source>
        <translation>图像抓拍完成。</translation>
    </message>
    <message>
        <source>Hint</source>
        <translation>提示</translation>
    </message>
</context>
<context>
    <name>QDevListWidget</name>
    <message>
        <source>Model:            </source>
        <translation>型号：                </translation>
    </message>
    <message>
        <source>Model:           </source>
        <translation>型号：                </translation>
    </message>
    <message>
        <source>GateWay:           </source>
        <translation>网关：                </translation>
    </message>
    <message>
        <source>GateWay:            </source>
        <translation>网关：                </translation>
    </message>
    <message>
        <source>Serial Number:    </source>
        <translation>序列号：             </translation>
    </message>
    <message>
        <source>Version:               </source>
        <translation>版本：                </translation>
    </message>
    <message>
        <source>%1[%2]</source>
        <translation>%1[%2]</translation>
    </message>
    <message>
        <source>%1

MAC:                   %2
IP Address:          %3
Subnet Mask:       %4
Default Gateway:  %5</source>
        <translation>%1

MAC：           %2
IP 地址：        %3
子网掩码：     %4
默认网关：     %5</translation>
    </message>
    <message>
        <source>IP Address:         </source>
        <translation>IP 地址：            </translation>
    </message>
    <message>
        <source>Subnet Mask:      </source>
        <translation>子网掩码：         </translation>
    </message>
    <message>
        <source>MAC:                  </source>
        <translation>MAC：               </translation>
    </message>
    <message>
        <source>Vendor:    </source>
        <translation>厂商：                </translation>
    </message>
    <message>
        <source>Device GUID:     </source>
        <translation>设备 GUID：      </translation>
    </message>
    <message>
        <source>(Unreachable)</source>
        <translation>（不可达）</translation>
    </message>
    <message>
        <source>Auto-Refresh</source>
        <translation>自动刷新</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>删除</translation>
    </message>
    <message>
        <source>Add Remote Camera</source>
        <translation>添加远程相机</translation>
    </message>
    <message>
        <source>Copy Information</source>
        <translation>复制信息</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>刷新</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>设备</translation>
    </message>
    <message>
        <source>Please disconnect the camera before deleting it.</source>
        <translation>删除前请先断开相机。</translation>
    </message>
    <message>
        <source>Editing IP address failed. The device may be
in use by others.</source>
        <translation>修改 IP 地址失败。设备可能
正被他人使用。</translation>
    </message>
</context>
<context>
    <name>QDialogEx</name>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>QDockTitleBar</name>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
</context>
<context>
    <name>QFolderSelectWidget</name>
    <message>
        <source>Open Directory</source>
        <translation>打开目录</translation>
    </message>
</context>
<context>
    <name>QForceIPWidget</name>
    <message>
        <source>Edit IP Address</source>
        <translation>修改 IP 地址</translation>
    </message>
    <message>
        <source>Editing IP address to make device reachable.</source>
        <translation>修改 IP 地址，使设备可达。</translation>
    </message>
    <message>
        <source>IP address:</source>
        <translation>IP 地址：</translation>
    </message>
    <message>
        <source>Please make sure the IP address is valid.</source>
        <translation>请确认 IP 地址有效。</translation>
    </message>
    <message>
        <source>The IP address is used by other device.</source>
        <translation>该 IP 地址已被其他设备使用。</translation>
    </message>
</context>
<context>
    <name>QFunction</name>
    <message>
        <source>Operation failed.</source>
        <translation>操作失败。</translation>
    </message>
    <message>
        <source>Application memory failed.</source>
        <translation>申请内存失败。</translation>
    </message>
    <message>
        <source>Startup thread failed.</source>
        <translation>启动线程失败。</translation>
    </message>
    <message>
        <source>Null pointer return.</source>
        <translation>返回空指针。</translation>
    </message>
    <message>
        <source>Failed to create the device.</source>
        <translation>创建设备失败。</translation>
    </message>
    <message>
        <source>Failed to connect the camera.</source>
        <translation>连接相机失败。</translation>
    </message>
    <message>
        <source>Failed to get the XML file.</source>
        <translation>获取 XML 文件失败。</translation>
    </message>
    <message>
        <source>Failed to get the frame data.</source>
        <translation>获取帧数据失败。</translation>
    </message>
    <message>
        <source>Failed to start capturing.</source>
        <translation>开始采集失败。</translation>
    </message>
    <message>
        <source>Failed to stop capturing.</source>
        <translation>停止采集失败。</translation>
    </message>
    <message>
        <source>Failed to get TL proxy.</source>
        <translation>获取传输层（TL）代理失败。</translation>
    </message>
    <message>
        <source>Failed to generate node mapping.</source>
        <translation>生成节点映射失败。</translation>
    </message>
    <message>
        <source>Failed to display the image in the specified region of selected window.</source>
        <translation>在所选窗口的指定区域显示图像失败。</translation>
    </message>
    <message>
        <source>Failed to get the color.</source>
        <translation>获取颜色失败。</translation>
    </message>
    <message>
        <source>Failed to get the device information.</source>
        <translation>获取设备信息失败。</translation>
    </message>
    <message>
        <source>Opening XML file failed.</source>
        <translation>打开 XML 文件失败。</translation>
    </message>
    <message>
        <source>The live view is not enabled.</source>
        <translation>未开启实时预览。</translation>
    </message>
    <message>
        <source>Pixel format is not supported.</source>
        <translation>不支持该像素格式。</translation>
    </message>
    <message>
        <source>Saving picture failed.</source>
        <translation>保存图片失败。</translation>
    </message>
    <message>
        <source>Failed to create handle of stream media library.</source>
        <translation>创建流媒体库句柄失败。</translation>
    </message>
    <message>
        <source>The device is unreachable. Please modify its IP address with IP configurator.</source>
        <translation>设备不可达，请使用 IP 配置工具修改其 IP 地址。</translation>
    </message>
    <message>
        <source>Please ensure that device is inserted in the USB 3.0 port of the PC.</source>
        <translation>请确认设备已插入计算机的 USB 3.0 接口。</translation>
    </message>
    <message>
        <source>No frame data.</source>
        <translation>无帧数据。</translation>
    </message>
    <message>
        <source>File operation failed.Please make sure HDD is not full.</source>
        <translation>文件操作失败，请确认硬盘未满。</translation>
    </message>
    <message>
        <source>Invalid path.</source>
        <translation>路径无效。</translation>
    </message>
    <message>
        <source>No permission.</source>
        <translation>没有权限。</translation>
    </message>
    <message>
        <source>No support image format.</source>
        <translation>不支持该图像格式。</translation>
    </message>
    <message>
        <source>Incorrect or invalid handle.</source>
        <translation>句柄错误或无效。</translation>
    </message>
    <message>
        <source>Not supported.</source>
        <translation>不支持。</translation>
    </message>
    <message>
        <source>Buffer is full.The resolution is not supported.</source>
        <translation>缓冲区已满，不支持该分辨率。</translation>
    </message>
    <message>
        <source>Calling function error.</source>
        <translation>函数调用错误。</translation>
    </message>
    <message>
        <source>Incorrect parameters.</source>
        <translation>参数错误。</translation>
    </message>
    <message>
        <source>Failed to get the resource..</source>
        <translation>获取资源失败。</translation>
    </message>
    <message>
        <source>Network error. Please modify the camera IP address with IP configurator to ensure the camera is reachable.</source>
        <translation>网络错误，请使用 IP 配置工具修改相机 IP 地址，确保相机可达。</translation>
    </message>
    <message>
        <source>No data.</source>
        <translation>无数据。</translation>
    </message>
    <message>
        <source>Precondition error or the running environment has changed. Please ensure that the device is not in use.</source>
        <translation>前置条件错误或运行环境已改变，请确认设备未被占用。</translation>
    </message>
    <message>
        <source>Packet error.</source>
        <translation>数据包错误。</translation>
    </message>
    <message>
        <source>Version error. Please ensure the driver version and SDK version match exactly.</source>
        <translation>版本错误，请确认驱动版本与 SDK 版本完全一致。</translation>
    </message>
    <message>
        <source>IP address conflicted. Please check whether there is camera with the same IP address in the subnet.</source>
        <translation>IP 地址冲突，请检查子网内是否有相同 IP 地址的相机。</translation>
    </message>
    <message>
        <source>GenIcam: General error.</source>
        <translation>GenICam：一般错误。</translation>
    </message>
    <message>
        <source>GenIcam: Invalid parameter.</source>
        <translation>GenICam：参数无效。</translation>
    </message>
    <message>
        <source>GenIcam: Parameter is out of range.</source>
        <translation>GenICam：参数超出范围。</translation>
    </message>
    <message>
        <source>GenIcam: Attribute error.</source>
        <translation>GenICam：属性错误。</translation>
    </message>
    <message>
        <source>GenIcam: Running environment error.</source>
        <translation>GenICam：运行环境错误。</translation>
    </message>
    <message>
        <source>GenIcam: Logical error.</source>
        <translation>GenICam：逻辑错误。</translation>
    </message>
    <message>
        <source>GenIcam: Access permission error.</source>
        <translation>GenICam：访问权限错误。</translation>
    </message>
    <message>
        <source>GenIcam: Timeout.</source>
        <translation>GenICam：超时。</translation>
    </message>
    <message>
        <source>GenIcam: Transforming error.</source>
        <translation>GenICam：转换错误。</translation>
    </message>
    <message>
        <source>Invalid address.</source>
        <translation>地址无效。</translation>
    </message>
    <message>
        <source>The address is read only.</source>
        <translation>该地址只读。</translation>
    </message>
    <message>
        <source>Failed to get the permission. The device is in use.</source>
        <translation>获取权限失败，设备已被占用。</translation>
    </message>
    <message>
        <source>Failed to connect the camera. Network error.</source>
        <translation>连接相机失败，网络错误。</translation>
    </message>
    <message>
        <source>Unknown error. Failed to connect the camera.</source>
        <translation>未知错误，连接相机失败。</translation>
    </message>
</context>
<context>
    <name>QHintAdjustDlg</name>
    <message>
        <source>To Adjust</source>
        <translation>去调整</translation>
    </message>
    <message>
        <source>Ignore</source>
        <translation>忽略</translation>
    </message>
</context>
<context>
    <name>QLoadingDlg</name>
    <message>
        <source>Please wait</source>
        <translation>请稍候</translation>
    </message>
</context>
<context>
    <name>QMessageBoxDlg</name>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>QMessageLogMngWidget</name>
    <message>
        <source>Sort by</source>
        <translation>排序方式</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>时间</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>级别</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>来源</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>信息</translation>
    </message>
</context>
<context>
    <name>QMessageLogWidget</name>
    <message>
        <source>Critical</source>
        <translation>严重</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>警告</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>消息</translation>
    </message>
    <message>
        <source>Level:</source>
        <translation>级别：</translation>
    </message>
    <message>
        <source>Source:</source>
        <translation>来源：</translation>
    </message>
    <message>
        <source>Time:</source>
        <translation>时间：</translation>
    </message>
    <message>
        <source>Message:</source>
        <translation>消息：</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>复制</translation>
    </message>
    <message>
        <source>Copy All</source>
        <translation>全部复制</translation>
    </message>
    <message>
        <source>Clear Message Log</source>
        <translation>清空消息日志</translation>
    </message>
</context>
<context>
    <name>QOrvCentralWindow</name>
    <message>
        <source>Connecting camera failed.</source>
        <translation>连接相机失败。</translation>
    </message>
    <message>
        <source>Connecting %1 failed.(%2)</source>
        <translation>连接 %1 失败。（%2）</translation>
    </message>
    <message>
        <source>%1 connected.</source>
        <translation>%1 已连接。</translation>
    </message>
    <message>
        <source>The network speed is less than 1.0 Gbps.
Please check the network connection.</source>
        <translation>网络速率低于 1.0 Gbps。
请检查网络连接。</translation>
    </message>
    <message>
        <source>Hint</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>Disconnecting %1 failed: %2</source>
        <translation>断开 %1 失败：%2</translation>
    </message>
    <message>
        <source>%1 disconnected.</source>
        <translation>%1 已断开。</translation>
    </message>
    <message>
        <source>Failed to start live view.</source>
        <translation>启动实时预览失败。</translation>
    </message>
    <message>
        <source>%1 failed to start live view. (%2)</source>
        <translation>%1 启动预览失败。（%2）</translation>
    </message>
    <message>
        <source>%1 started live view.</source>
        <translation>%1 已启动预览。</translation>
    </message>
    <message>
        <source>%1 failed to stop the live view. (%1)</source>
        <translation>%1 停止预览失败。（%1）</translation>
    </message>
    <message>
        <source>%1 stopped the live view.</source>
        <translation>%1 已停止预览。</translation>
    </message>
    <message>
        <source>This file is hidden files.</source>
        <translation>该文件为隐藏文件。</translation>
    </message>
    <message>
        <source>Save Image</source>
        <translation>保存图像</translation>
    </message>
    <message>
        <source>Images (*.bmp);;RawData (*.raw);;Images (*.jpg)</source>
        <translation>图像 (*.bmp);;原始数据 (*.raw);;图像 (*.jpg)</translation>
    </message>
    <message>
        <source>Images captured.</source>
        <translation>抓图成功。</translation>
    </message>
    <message>
        <source>Failed to save the captured image.</source>
        <translation>保存抓图失败。</translation>
    </message>
    <message>
        <source>Failed to save the captured image. (%1)</source>
        <translation>保存抓图失败。（%1）</translation>
    </message>
    <message>
        <source>Save Record</source>
        <translation>保存录像</translation>
    </message>
    <message>
        <source>RawData(*.raw)</source>
        <translation>原始数据(*.raw)</translation>
    </message>
    <message>
        <source>Recording failed.</source>
        <translation>录像失败。</translation>
    </message>
    <message>
        <source>Recording failed. (%1)</source>
        <translation>录像失败。（%1）</translation>
    </message>
    <message>
        <source>Recording failed.No data.</source>
        <translation>录像失败。没有数据。</translation>
    </message>
    <message>
        <source>Video files saved.</source>
        <translation>录像已保存。</translation>
    </message>
    <message>
        <source>No picture saved.</source>
        <translation>没有保存图片。</translation>
    </message>
    <message>
        <source>Save GenIcam File</source>
        <translation>保存 GenICam 文件</translation>
    </message>
    <message>
        <source>File (*.xml)</source>
        <translation>文件 (*.xml)</translation>
    </message>
    <message>
        <source>Failed to save the GenICam XML file. (%1)</source>
        <translation>保存 GenICam XML 文件失败。（%1）</translation>
    </message>
    <message>
        <source>Failed to open the attribute settings. 
Please stop recording first.</source>
        <translation>打开属性设置失败。
请先停止录像。</translation>
    </message>
    <message>
        <source>Failed to open the attribute settings. Please stop capturing first.</source>
        <translation>打开属性设置失败。请先停止抓图。</translation>
    </message>
    <message>
        <source>Failed to open the Option window.</source>
        <translation>打开选项窗口失败。</translation>
    </message>
    <message>
        <source>This version has no feature editor.</source>
        <translation>此版本没有属性编辑器。</translation>
    </message>
    <message>
        <source>This version doesn&apos;t show the embedded information.</source>
        <translation>此版本不显示嵌入信息。</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>设备</translation>
    </message>
    <message>
        <source>Feature</source>
        <translation>属性</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>日志</translation>
    </message>
    <message>
        <source>Embedded Information</source>
        <translation>嵌入信息</translation>
    </message>
    <message>
        <source>The packet loss is too much.Please adjust the bandwidth.</source>
        <translation>丢包过多，请调整带宽。</translation>
    </message>
</context>
<context>
    <name>QOrvMainWindow</name>
    <message>
        <source>KOLT CAPTURE %1</source>
        <translation>KOLT CAPTURE %1</translation>
    </message>
    <message>
        <source>File</source>
        <translation>文件</translation>
    </message>
    <message>
        <source>View</source>
        <translation>视图</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>相机</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>设置</translation>
    </message>
    <message>
        <source>Tool</source>
        <translation>工具</translation>
    </message>
    <message>
        <source>Lang</source>
        <translation>语言</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>帮助</translation>
    </message>
    <message>
        <source>Display Mode</source>
        <translation>显示模式</translation>
    </message>
    <message>
        <source>Exit</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>放大</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>缩小</translation>
    </message>
    <message>
        <source>Fit to Window</source>
        <translation>适应窗口</translation>
    </message>
    <message>
        <source>Actual Size</source>
        <translation>实际大小</translation>
    </message>
    <message>
        <source>30 fps</source>
        <translation>30 fps</translation>
    </message>
    <message>
        <source>60 fps</source>
        <translation>60 fps</translation>
    </message>
    <message>
        <source>Disable Display</source>
        <translation>禁用显示</translation>
    </message>
    <message>
        <source>Import Features</source>
        <translation>导入属性</translation>
    </message>
    <message>
        <source>Export Features</source>
        <translation>导出属性</translation>
    </message>
    <message>
        <source>Add Remote Camera</source>
        <translation>添加远程相机</translation>
    </message>
    <message>
        <source>Save GenIcam XML</source>
        <translation>保存 GenICam XML</translation>
    </message>
    <message>
        <source>Feature</source>
        <translation>属性</translation>
    </message>
    <message>
        <source>Option</source>
        <translation>选项</translation>
    </message>
    <message>
        <source>IP Configurator</source>
        <translation>IP 配置工具</translation>
    </message>
    <message>
        <source>Firmware Updater</source>
        <translation>固件升级工具</translation>
    </message>
    <message>
        <source>English</source>
        <translation>English</translation>
    </message>
    <message>
        <source>Chinese</source>
        <translation>中文</translation>
    </message>
    <message>
        <source>User Manual</source>
        <translation>用户手册</translation>
    </message>
    <message>
        <source>About</source>
        <translation>关于</translation>
    </message>
    <message>
        <source>Disconnect Camera</source>
        <translation>断开相机</translation>
    </message>
    <message>
        <source>Connect Camera</source>
        <translation>连接相机</translation>
    </message>
    <message>
        <source>Stop Acquisition</source>
        <translation>停止采集</translation>
    </message>
    <message>
        <source>Start Acquisition</source>
        <translation>开始采集</translation>
    </message>
    <message>
        <source>Stop Recording</source>
        <translation>停止录像</translation>
    </message>
    <message>
        <source>Start Recording</source>
        <translation>开始录像</translation>
    </message>
    <message>
        <source>Stop Capturing</source>
        <translation>停止抓图</translation>
    </message>
    <message>
        <source>Capture and Save</source>
        <translation>抓图并保存</translation>
    </message>
    <message>
        <source>Hint</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>Exit the client?</source>
        <translation>是否退出客户端？</translation>
    </message>
    <message>
        <source>Please turn off Windows Firewall to ensure
that the client can work properly.</source>
        <translation>请关闭 Windows 防火墙，
以确保客户端正常工作。</translation>
    </message>
</context>
<context>
    <name>QOrvToolBar</name>
    <message>
        <source>Disconnect Camera</source>
        <translation>断开相机</translation>
    </message>
    <message>
        <source>Connect Camera</source>
        <translation>连接相机</translation>
    </message>
    <message>
        <source>Stop Live View</source>
        <translation>停止预览</translation>
    </message>
    <message>
        <source>Start Acquisition</source>
        <translation>开始采集</translation>
    </message>
    <message>
        <source>Stop Recording</source>
        <translation>停止录像</translation>
    </message>
    <message>
        <source>Start Recording</source>
        <translation>开始录像</translation>
    </message>
    <message>
        <source>Stop Capturing</source>
        <translation>停止抓图</translation>
    </message>
    <message>
        <source>Capture and Save</source>
        <translation>抓图并保存</translation>
    </message>
    <message>
        <source>Control Toolbar</source>
        <translation>工具栏</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>放大</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>缩小</translation>
    </message>
    <message>
        <source>Fit to Window</source>
        <translation>适应窗口</translation>
    </message>
    <message>
        <source>Actual Size</source>
        <translation>实际大小</translation>
    </message>
</context>
<context>
    <name>QPrevStatusBar</name>
    <message>
        <source>LineRate: --Hz</source>
        <translation>行频：--Hz</translation>
    </message>
    <message>
        <source>AcquisitionRate: --fps</source>
        <translation>采集帧率：--fps</translation>
    </message>
    <message>
        <source>Image: --</source>
        <translation>图像：--</translation>
    </message>
    <message>
        <source>BW: --</source>
        <translation>带宽：--</translation>
    </message>
    <message>
        <source>Resolution: --x--</source>
        <translation>分辨率：--x--</translation>
    </message>
    <message>
        <source>Error: --</source>
        <translation>错误：--</translation>
    </message>
    <message>
        <source>LostPacket: --</source>
        <translation>丢包：--</translation>
    </message>
    <message>
        <source>DisplayRate: --</source>
        <translation>显示帧率：--</translation>
    </message>
    <message>
        <source>Location: --,--</source>
        <translation>位置：--,--</translation>
    </message>
    <message>
        <source>RGB: --</source>
        <translation>RGB：--</translation>
    </message>
    <message>
        <source>YUV: --</source>
        <translation>YUV：--</translation>
    </message>
    <message>
        <source>Zoom: --%</source>
        <translation>缩放：--%</translation>
    </message>
    <message>
        <source>Temperature: --</source>
        <translation>温度：--</translation>
    </message>
    <message>
        <source>Choose the items of the status bar</source>
        <translation>选择状态栏显示项</translation>
    </message>
    <message>
        <source>Image:%1</source>
        <translation>图像：%1</translation>
    </message>
    <message>
        <source>RGB: %1 %2 %3</source>
        <translation>RGB：%1 %2 %3</translation>
    </message>
    <message>
        <source>YUV: %1 %2 %3</source>
        <translation>YUV：%1 %2 %3</translation>
    </message>
</context>
<context>
    <name>QPrevTitleBar</name>
    <message>
        <source>Capturing...</source>
        <translation>正在抓图……</translation>
    </message>
</context>
<context>
    <name>QPreviewWidget</name>
    <message>
        <source>Live picture</source>
        <translation>实时画面</translation>
    </message>
    <message>
        <source>Zoom: %1%</source>
        <translation>缩放：%1%</translation>
    </message>
</context>
<context>
    <name>QRenderWidget</name>
    <message>
        <source>Zoom: --%</source>
        <translation>缩放：--%</translation>
    </message>
    <message>
        <source>Error: --</source>
        <translation>错误：--</translation>
    </message>
    <message>
        <source>LostPacket: --</source>
        <translation>丢包：--</translation>
    </message>
    <message>
        <source>Error: %1</source>
        <translation>错误：%1</translation>
    </message>
    <message>
        <source>LostPacket: %1</source>
        <translation>丢包：%1</translation>
    </message>
    <message>
        <source>AcquisitionRate: --fps</source>
        <translation>采集帧率：--fps</translation>
    </message>
    <message>
        <source>BW: --Mbps</source>
        <translation>带宽：--Mbps</translation>
    </message>
    <message>
        <source>DisplayRate: --fps</source>
        <translation>显示帧率：--fps</translation>
    </message>
    <message>
        <source>Locate: %1, %2</source>
        <translation>位置：%1, %2</translation>
    </message>
    <message>
        <source>Locate: --, --</source>
        <translation>位置：--, --</translation>
    </message>
    <message>
        <source>LineRate: %1Hz</source>
        <translation>行频：%1Hz</translation>
    </message>
    <message>
        <source>BW:%1Mbps</source>
        <translation>带宽：%1Mbps</translation>
    </message>
    <message>
        <source>DisplayRate:%1fps</source>
        <translation>显示帧率：%1fps</translation>
    </message>
    <message>
        <source>Temperature: %1</source>
        <translation>温度：%1</translation>
    </message>
    <message>
        <source>Resolution: %1 * %2</source>
        <translation>分辨率：%1 * %2</translation>
    </message>
    <message>
        <source>AcquisitionRate:%1fps</source>
        <translation>采集帧率：%1fps</translation>
    </message>
</context>
<context>
    <name>QSaveDoneHintDlg</name>
    <message>
        <source>View</source>
        <translation>查看</translation>
    </message>
</context>
<context>
    <name>QSearchWidget</name>
    <message>
        <source>Search</source>
        <translation>搜索</translation>
    </message>
</context>
<context>
    <name>QShowMessageDlg</name>
    <message>
        <source>Details</source>
        <translation>详情</translation>
    </message>
    <message>
        <source>Hide Details</source>
        <translation>隐藏详情</translation>
    </message>
    <message>
        <source>Show Details</source>
        <translation>显示详情</translation>
    </message>
</context>
<context>
    <name>QStatusItemSelectWidget</name>
    <message>
        <source>Line Rate</source>
        <translation>行频</translation>
    </message>
    <message>
        <source>Acquisition Rate</source>
        <translation>采集帧率</translation>
    </message>
    <message>
        <source>Image Number</source>
        <translation>图像数量</translation>
    </message>
    <message>
        <source>Bandwidth</source>
        <translation>带宽</translation>
    </message>
    <message>
        <source>Resolution</source>
        <translation>分辨率</translation>
    </message>
    <message>
        <source>Errors</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>Packets Lost</source>
        <translation>丢包</translation>
    </message>
    <message>
        <source>Display Rate</source>
        <translation>显示帧率</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>位置</translation>
    </message>
    <message>
        <source>RGB</source>
        <translation>RGB</translation>
    </message>
    <message>
        <source>YUV</source>
        <translation>YUV</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>缩放</translation>
    </message>
    <message>
        <source>Temperature</source>
        <translation>温度</translation>
    </message>
    <message>
        <source>All</source>
        <translation>全部</translation>
    </message>
</context>
<context>
    <name>QTitleBar</name>
    <message>
        <source>Minimize</source>
        <translation>最小化</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>还原</translation>
    </message>
    <message>
        <source>Maximize</source>
        <translation>最大化</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Menu</source>
        <translation>菜单</translation>
    </message>
</context>
</TS>
